<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU" sourcelanguage="en">
<context>
    <name>Calendar</name>
    <message>
        <source>Input day</source>
        <translation>Выбор дня</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Сегодня</translation>
    </message>
    <message>
        <source>Today is </source>
        <translation>Сегодня </translation>
    </message>
</context>
<context>
    <name>DialogObjsFromTo</name>
    <message>
        <source>Only Player</source>
        <translation>Только воспроизведение</translation>
    </message>
    <message>
        <source>Only Reports</source>
        <translation>Только отчёты</translation>
    </message>
    <message>
        <source>Player with Reports</source>
        <translation>Воспроизведение и отчёты</translation>
    </message>
    <message>
        <source>Remember selection</source>
        <translation>Запомнить выбор</translation>
    </message>
    <message>
        <source>View logs</source>
        <translation>Показать журналы</translation>
    </message>
    <message>
        <source>View packets</source>
        <translation>Показать пакеты</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Поиск</translation>
    </message>
    <message>
        <source>Select objects</source>
        <translation>Выбор объектов</translation>
    </message>
    <message>
        <source>From</source>
        <translation>С</translation>
    </message>
    <message>
        <source>To</source>
        <translation>По</translation>
    </message>
    <message>
        <source>Calendar</source>
        <translation>Календарь</translation>
    </message>
    <message>
        <source>Search objects</source>
        <translation>Искать объекты</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Назад</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Вперёд</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Очистить</translation>
    </message>
    <message>
        <source>Match: %1</source>
        <translation>Найдено: %1</translation>
    </message>
    <message>
        <source>Match not found</source>
        <translation>Не найдено</translation>
    </message>
</context>
<context>
    <name>TUtils</name>
    <message>
        <source>Unknow</source>
        <translation>Неизвестно</translation>
    </message>
</context>
<context>
    <name>TreeObjCheckable</name>
    <message>
        <source>Select/Deselect all</source>
        <translation>Выбрать все / снять выделение</translation>
    </message>
</context>
<context>
    <name>TreeObjCheckableE</name>
    <message>
        <source>Select/Deselect all</source>
        <translation>Выбрать все / снять выделение</translation>
    </message>
</context>
<context>
    <name>fdPassword</name>
    <message>
        <source>Login</source>
        <translation>Вход</translation>
    </message>
    <message>
        <source>Login name</source>
        <translation>Логин</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Пароль</translation>
    </message>
</context>
</TS>
