<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru_RU" sourcelanguage="en">
<context>
    <name>AlarmList</name>
    <message>
        <source>Time</source>
        <translation>Время</translation>
    </message>
    <message>
        <source>Object</source>
        <translation>Объект</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Место</translation>
    </message>
    <message>
        <source>Speed, km/h</source>
        <translation>Скорость, км/ч</translation>
    </message>
    <message>
        <source>Until</source>
        <translation>До</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Состояние</translation>
    </message>
    <message>
        <source>Remark</source>
        <translation>Примечание</translation>
    </message>
    <message>
        <source>still on</source>
        <translation>ещё длится</translation>
    </message>
    <message>
        <source>new</source>
        <translation>новая</translation>
    </message>
    <message>
        <source>acknowledged by %1, %2</source>
        <translation>подтвердил(а) %1, %2</translation>
    </message>
</context>
<context>
    <name>AlarmPanel</name>
    <message>
        <source>Ac&amp;knowledge</source>
        <translation>&amp;Подтвердить</translation>
    </message>
    <message>
        <source>&amp;Sound</source>
        <translation>&amp;Звук</translation>
    </message>
    <message>
        <source>Alarms</source>
        <translation>Тревоги</translation>
    </message>
    <message>
        <source>Remark</source>
        <translation>Примечание</translation>
    </message>
    <message>
        <source>New: %1</source>
        <translation>Новых: %1</translation>
    </message>
</context>
<context>
    <name>AlarmStore</name>
    <message>
        <source>Alarms are not shared with other desks: %1</source>
        <translation>Тревоги не видны на других пультах: %1</translation>
    </message>
    <message>
        <source>%1 changes were too many to be kept for later</source>
        <translation>%1 изменений не удалось сохранить на потом: их слишком много</translation>
    </message>
</context>
<context>
    <name>CaptureReplay</name>
    <message>
        <source>cannot play %1: that is no file</source>
        <translation>нельзя воспроизвести %1: это не файл</translation>
    </message>
    <message>
        <source>cannot play %1: %2</source>
        <translation>нельзя воспроизвести %1: %2</translation>
    </message>
    <message>
        <source>playing %1</source>
        <translation>воспроизводится %1</translation>
    </message>
    <message>
        <source>stopped</source>
        <translation>остановлено</translation>
    </message>
    <message>
        <source>to its end</source>
        <translation>до конца</translation>
    </message>
    <message>
        <source>%1 played: %2 (%3 packets, %4 bad checksums, %5 rejected, %6 bytes skipped)</source>
        <translation>%1 воспроизведён: %2 (пакетов: %3, с неверной контрольной суммой: %4, отклонено: %5, пропущено байт: %6)</translation>
    </message>
</context>
<context>
    <name>DeskArchive</name>
    <message>
        <source>Truck %1</source>
        <translation>Грузовик %1</translation>
    </message>
    <message>
        <source>Van %1</source>
        <translation>Фургон %1</translation>
    </message>
    <message>
        <source>Trucks</source>
        <translation>Грузовики</translation>
    </message>
    <message>
        <source>Vans</source>
        <translation>Фургоны</translation>
    </message>
    <message>
        <source>Objects</source>
        <translation>Объекты</translation>
    </message>
</context>
<context>
    <name>DeskSettings</name>
    <message>
        <source>%1 cannot be read and was left as it is; it has to be a file that you may read, and %2, for temporary files, a folder with room.</source>
        <translation>Не удалось прочесть %1; содержимое не изменено. Это должен быть файл, который вам разрешено читать, а в %2, папке для временных файлов, должно быть место.</translation>
    </message>
    <message>
        <source>%1 cannot be written to; --data FOLDER keeps settings, database and logs in another folder.</source>
        <translation>Нет права на запись: %1. С ключом --data ПАПКА настройки, база и журналы хранятся в другой папке.</translation>
    </message>
</context>
<context>
    <name>DeskWindow</name>
    <message>
        <source>Desk</source>
        <translation>Пульт</translation>
    </message>
    <message>
        <source>Last states</source>
        <translation>Последние данные</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Отчёт</translation>
    </message>
    <message>
        <source>Plot</source>
        <translation>График</translation>
    </message>
    <message>
        <source>Plot saved: %1</source>
        <translation>График сохранён: %1</translation>
    </message>
    <message>
        <source>Alarms</source>
        <translation>Тревоги</translation>
    </message>
    <message>
        <source>&amp;Desk</source>
        <translation>&amp;Пульт</translation>
    </message>
    <message>
        <source>Times in &amp;UTC</source>
        <translation>Время по &amp;UTC</translation>
    </message>
    <message>
        <source>&amp;Filter the objects</source>
        <translation>&amp;Отобрать объекты</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Выход</translation>
    </message>
    <message>
        <source>&amp;Live</source>
        <translation>&amp;Сейчас</translation>
    </message>
    <message>
        <source>Replay a &amp;capture…</source>
        <translation>Воспроизвести &amp;запись…</translation>
    </message>
    <message>
        <source>&amp;Stop the capture</source>
        <translation>&amp;Остановить запись</translation>
    </message>
    <message>
        <source>&amp;Reports</source>
        <translation>&amp;Отчёты</translation>
    </message>
    <message>
        <source>&amp;Report or replay…</source>
        <translation>&amp;Отчёт или воспроизведение…</translation>
    </message>
    <message>
        <source>&amp;Play or pause</source>
        <translation>&amp;Пуск или пауза</translation>
    </message>
    <message>
        <source>&amp;End the replay</source>
        <translation>&amp;Завершить воспроизведение</translation>
    </message>
    <message>
        <source>&amp;Alarms</source>
        <translation>&amp;Тревоги</translation>
    </message>
    <message>
        <source>&amp;List of alarms</source>
        <translation>&amp;Список тревог</translation>
    </message>
    <message>
        <source>&amp;Acknowledge the selected</source>
        <translation>&amp;Подтвердить выбранную</translation>
    </message>
    <message>
        <source>&amp;Map</source>
        <translation>&amp;Карта</translation>
    </message>
    <message>
        <source>Show &amp;all</source>
        <translation>Показать &amp;всё</translation>
    </message>
    <message>
        <source>1 : %1</source>
        <translation>1 : %1</translation>
    </message>
    <message>
        <source>Report saved: %1</source>
        <translation>Отчёт сохранён: %1</translation>
    </message>
    <message>
        <source>The map&apos;s tiles come again</source>
        <translation>Фрагменты карты снова загружаются</translation>
    </message>
    <message>
        <source>The map&apos;s tiles do not come: %1</source>
        <translation>Фрагменты карты не загружаются: %1</translation>
    </message>
    <message>
        <source>Alarm: %1</source>
        <translation>Тревога: %1</translation>
    </message>
    <message>
        <source>Alarms are shared with other desks again</source>
        <translation>Тревоги снова видны на других пультах</translation>
    </message>
    <message>
        <source>The replay has ended, to show where %1 is now</source>
        <translation>Воспроизведение завершено, чтобы показать, где сейчас %1</translation>
    </message>
    <message>
        <source>Alarms (%1 new)</source>
        <translation>Тревоги (новых: %1)</translation>
    </message>
    <message>
        <source>New alarms: %1</source>
        <translation>Новых тревог: %1</translation>
    </message>
    <message>
        <source>%1 more messages of new objects and alarms in a second are left out</source>
        <translation>За секунду пропущено ещё сообщений о новых объектах и тревогах: %1</translation>
    </message>
    <message>
        <source>%1 – Desk</source>
        <translation>%1 – Пульт</translation>
    </message>
    <message>
        <source>Logged in: %1</source>
        <translation>Вход: %1</translation>
    </message>
    <message>
        <source>Live data come from the archive</source>
        <translation>Текущие данные поступают из архива</translation>
    </message>
    <message>
        <source>live from the archive</source>
        <translation>текущие данные из архива</translation>
    </message>
    <message>
        <source>no live data from the archive</source>
        <translation>из архива нет текущих данных</translation>
    </message>
    <message>
        <source>What terminals send is shown, but not stored: %1</source>
        <translation>Данные терминалов показываются, но не сохраняются: %1</translation>
    </message>
    <message>
        <source>%1:%2  ·  %3 connected  ·  %4 packets, %5 bad</source>
        <translation>%1:%2  ·  подключено: %3  ·  пакетов: %4, плохих: %5</translation>
    </message>
    <message>
        <source>The archive cannot be read: %1</source>
        <translation>Не удалось прочитать архив: %1</translation>
    </message>
    <message>
        <source>New terminals</source>
        <translation>Новые терминалы</translation>
    </message>
    <message>
        <source>New object: %1</source>
        <translation>Новый объект: %1</translation>
    </message>
    <message>
        <source>Objects and period of the report</source>
        <translation>Объекты и период отчёта</translation>
    </message>
    <message>
        <source>Report of %1 objects</source>
        <translation>Отчёт, объектов: %1</translation>
    </message>
    <message>
        <source>Report of %1 objects, %2 to %3</source>
        <translation>Отчёт, объектов: %1, с %2 по %3</translation>
    </message>
    <message>
        <source>%1: nothing in the archive today</source>
        <translation>%1: за сегодня в архиве ничего нет</translation>
    </message>
    <message>
        <source>%1: today&apos;s track</source>
        <translation>%1: трек за сегодня</translation>
    </message>
    <message>
        <source>Replay a capture</source>
        <translation>Воспроизвести запись</translation>
    </message>
    <message>
        <source>Times as fast as it was sent</source>
        <translation>Во сколько раз быстрее, чем передавалось</translation>
    </message>
    <message>
        <source>Making a simulated day…</source>
        <translation>Создаётся имитация суток…</translation>
    </message>
    <message>
        <source>Password of %1: </source>
        <translation>Пароль пользователя %1: </translation>
    </message>
    <message>
        <source>Walk through the desk, save pictures of the steps, and end.</source>
        <translation>Пройти по пульту, сохранить снимки шагов и завершиться.</translation>
    </message>
    <message>
        <source>Simulated terminals of the tour (default 20).</source>
        <translation>Число имитируемых терминалов обхода (иначе 20).</translation>
    </message>
    <message>
        <source>Read a password for this user from standard input, and end.</source>
        <translation>Прочитать пароль этого пользователя со стандартного ввода и завершиться.</translation>
    </message>
    <message>
        <source>Start of %1</source>
        <translation>Запуск %1</translation>
    </message>
    <message>
        <source>Login of %1 refused: %2</source>
        <translation>Отказано во входе %1: %2</translation>
    </message>
    <message>
        <source>&amp;Objects</source>
        <translation>О&amp;бъекты</translation>
    </message>
    <message>
        <source>&amp;Find…</source>
        <translation>&amp;Найти…</translation>
    </message>
    <message>
        <source>Find &amp;next</source>
        <translation>Найти &amp;далее</translation>
    </message>
    <message>
        <source>Find &amp;previous</source>
        <translation>Найти &amp;предыдущий</translation>
    </message>
    <message>
        <source>%1 online</source>
        <translation>на связи: %1</translation>
    </message>
    <message>
        <source>%1 silent</source>
        <translation>молчат: %1</translation>
    </message>
    <message>
        <source>%1 never heard</source>
        <translation>не выходили на связь: %1</translation>
    </message>
    <message>
        <source>No terminals are let in: %1</source>
        <translation>Терминалы не принимаются: %1</translation>
    </message>
    <message>
        <source>At least %1 terminals are expected</source>
        <translation>Ожидается терминалов не меньше: %1</translation>
    </message>
    <message>
        <source>Further objects of the tour, from one connection (default none, at most 65536).</source>
        <translation>Дополнительные объекты обхода по одному соединению (иначе нет, не более 65536).</translation>
    </message>
    <message>
        <source>A dispatcher&apos;s console. &quot;man pardel-desk&quot; says more.</source>
        <translation>Пульт диспетчера. Подробнее: «man pardel-desk».</translation>
    </message>
    <message>
        <source>Keep settings, database and logs there (default: the user&apos;s folders, or the executable&apos;s).</source>
        <translation>Папка для настроек, базы и журналов (иначе папки пользователя или папка программы).</translation>
    </message>
    <message>
        <source>Settings: %1, data: %2</source>
        <translation>Настройки: %1, данные: %2</translation>
    </message>
    <message>
        <source>Changes of alarms that are not stored: %1. What was raised or acknowledged last is not known to other desks, nor to this one when it is started again</source>
        <translation>Не сохранено изменений тревог: %1. О последних поднятых и подтверждённых тревогах не узнают ни другие пульты, ни этот после нового запуска</translation>
    </message>
    <message>
        <source>Take the tour in dark colors.</source>
        <translation>Пройти обзор в тёмных цветах.</translation>
    </message>
    <message>
        <source>Reports not shown, as their time cannot be right: %1</source>
        <translation>Не показано сообщений, время которых не может быть верным: %1</translation>
    </message>
    <message>
        <source>%1: reports without a time are not shown</source>
        <translation>%1: сообщения без времени не показываются</translation>
    </message>
    <message>
        <source>%1: reports of %2 are not shown, as that is no time of now: look at the clocks of terminal and desk</source>
        <translation>%1: сообщения от %2 не показываются, это не нынешнее время: проверьте часы терминала и пульта</translation>
    </message>
    <message>
        <source>The report was cancelled</source>
        <translation>Отчёт отменён</translation>
    </message>
    <message>
        <source>Reading the archive…</source>
        <translation>Чтение архива…</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
</context>
<context>
    <name>LiveSource</name>
    <message>
        <source>Live/Source=%1 is neither archive nor terminals nor auto; auto is used</source>
        <translation>Live/Source=%1: не archive, не terminals и не auto; действует auto</translation>
    </message>
</context>
<context>
    <name>LoginFlow</name>
    <message>
        <source>There is no user %1.</source>
        <translation>Нет пользователя %1.</translation>
    </message>
    <message>
        <source>Too many failures: wait %1 s</source>
        <translation>Слишком много попыток: подождите %1 с</translation>
    </message>
    <message>
        <source>Enter your name</source>
        <translation>Введите имя</translation>
    </message>
    <message>
        <source>Caps lock is on</source>
        <translation>Включён Caps Lock</translation>
    </message>
    <message>
        <source>Unknown name or wrong password</source>
        <translation>Неизвестное имя или неверный пароль</translation>
    </message>
    <message>
        <source>The database does not answer</source>
        <translation>База данных не отвечает</translation>
    </message>
    <message>
        <source>Unknown name</source>
        <translation>Неизвестное имя</translation>
    </message>
    <message>
        <source>Wrong password</source>
        <translation>Неверный пароль</translation>
    </message>
</context>
<context>
    <name>MapTiles</name>
    <message>
        <source>Tiles=%1 is not used: it lacks %2</source>
        <translation>Tiles=%1 не действует: нет %2</translation>
    </message>
    <message>
        <source>Tiles=%1 is not used: it is no https: or file: address</source>
        <translation>Tiles=%1 не действует: это не адрес https: или file:</translation>
    </message>
    <message>
        <source>Tiles=%1 is not used: each tile would come from another server</source>
        <translation>Tiles=%1 не действует: каждый фрагмент приходил бы с другого сервера</translation>
    </message>
</context>
<context>
    <name>MapView</name>
    <message>
        <source>%1 km</source>
        <translation>%1 км</translation>
    </message>
    <message>
        <source>%1 m</source>
        <translation>%1 м</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Карта</translation>
    </message>
    <message>
        <source>Follows %1</source>
        <translation>Слежение: %1</translation>
    </message>
    <message>
        <source>No new tiles: %1</source>
        <translation>Нет новых фрагментов карты: %1</translation>
    </message>
    <message>
        <source>%1 km/h, course %2°</source>
        <translation>%1 км/ч, курс %2°</translation>
    </message>
    <message>
        <source>stands</source>
        <translation>стоит</translation>
    </message>
    <message>
        <source>%1: %2, %3, %4%5%6</source>
        <translation>%1: %2, %3, %4%5%6</translation>
    </message>
    <message>
        <source>, alarm</source>
        <translation>, тревога</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>и ещё %1</translation>
    </message>
    <message>
        <source>Replay, not now: %1</source>
        <translation>Воспроизведение, не сейчас: %1</translation>
    </message>
</context>
<context>
    <name>ObjectMenu</name>
    <message>
        <source>&amp;Centre on it</source>
        <translation>&amp;В центр</translation>
    </message>
    <message>
        <source>&amp;Zoom to it</source>
        <translation>&amp;Приблизить</translation>
    </message>
    <message>
        <source>&amp;Follow it</source>
        <translation>&amp;Следить</translation>
    </message>
    <message>
        <source>&amp;Today&apos;s track</source>
        <translation>&amp;Трек за сегодня</translation>
    </message>
    <message>
        <source>&amp;Report…</source>
        <translation>&amp;Отчёт…</translation>
    </message>
    <message>
        <source>Copy &amp;position</source>
        <translation>&amp;Копировать координаты</translation>
    </message>
    <message>
        <source>&amp;Centre here</source>
        <translation>&amp;Центр здесь</translation>
    </message>
    <message>
        <source>Show &amp;all</source>
        <translation>Показать &amp;всё</translation>
    </message>
</context>
<context>
    <name>ObjectStates</name>
    <message>
        <source>online</source>
        <translation>на связи</translation>
    </message>
    <message>
        <source>silent since %1</source>
        <translation>молчит с %1</translation>
    </message>
    <message>
        <source>never heard</source>
        <translation>ни разу не выходил на связь</translation>
    </message>
    <message>
        <source>silent %1</source>
        <translation>молчит %1</translation>
    </message>
    <message>
        <source>new alarm, %1</source>
        <translation>новая тревога, %1</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 с</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 мин</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 ч</translation>
    </message>
    <message>
        <source>%1 d</source>
        <translation>%1 д</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>молчит</translation>
    </message>
</context>
<context>
    <name>ObjectsPanel</name>
    <message>
        <source>Filter</source>
        <translation>Фильтр</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Поиск</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Предыдущий</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Следующий</translation>
    </message>
    <message>
        <source>Matches: %1</source>
        <translation>Найдено: %1</translation>
    </message>
    <message>
        <source>No objects yet</source>
        <translation>Объектов пока нет</translation>
    </message>
    <message>
        <source>No name contains “%1”</source>
        <translation>Нет имён, содержащих «%1»</translation>
    </message>
    <message>
        <source>Nothing found</source>
        <translation>Ничего не найдено</translation>
    </message>
    <message>
        <source>new alarms: %1</source>
        <translation>новых тревог: %1</translation>
    </message>
</context>
<context>
    <name>Period</name>
    <message>
        <source>&amp;Today</source>
        <translation>&amp;Сегодня</translation>
    </message>
    <message>
        <source>&amp;Yesterday</source>
        <translation>&amp;Вчера</translation>
    </message>
    <message>
        <source>Last &amp;hour</source>
        <translation>Последний &amp;час</translation>
    </message>
    <message>
        <source>Last &amp;24 hours</source>
        <translation>Последние &amp;24 часа</translation>
    </message>
    <message>
        <source>This &amp;week</source>
        <translation>Эта &amp;неделя</translation>
    </message>
    <message>
        <source>The period ends before it begins</source>
        <translation>Период кончается раньше, чем начинается</translation>
    </message>
    <message>
        <source>The period has not begun yet</source>
        <translation>Период ещё не начался</translation>
    </message>
    <message>
        <source>There is nothing from before 1970</source>
        <translation>До 1970 года данных нет</translation>
    </message>
    <message>
        <source>The period is longer than a year</source>
        <translation>Период длиннее года</translation>
    </message>
</context>
<context>
    <name>PeriodDialog</name>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Times in UTC</source>
        <translation>Время по UTC</translation>
    </message>
    <message>
        <source>Local times</source>
        <translation>Местное время</translation>
    </message>
    <message>
        <source>Tick an object</source>
        <translation>Отметьте объект</translation>
    </message>
</context>
<context>
    <name>PlotView</name>
    <message>
        <source>&amp;Object:</source>
        <translation>&amp;Объект:</translation>
    </message>
    <message>
        <source>&amp;Value:</source>
        <translation>&amp;Величина:</translation>
    </message>
    <message>
        <source>P&amp;icture…</source>
        <translation>&amp;Снимок…</translation>
    </message>
    <message>
        <source>The archive cannot be read: %1</source>
        <translation>Не удалось прочитать архив: %1</translation>
    </message>
    <message>
        <source>The first %1 points</source>
        <translation>Первые точки, всего %1</translation>
    </message>
    <message>
        <source>No values in this period</source>
        <translation>За этот период значений нет</translation>
    </message>
    <message>
        <source>The file %1 cannot be written.</source>
        <translation>Не удалось записать файл %1.</translation>
    </message>
    <message>
        <source>Save the plot</source>
        <translation>Сохранить график</translation>
    </message>
    <message>
        <source>plot.png</source>
        <translation>график.png</translation>
    </message>
    <message>
        <source>Pictures (*.png *.jpg *.bmp)</source>
        <translation>Снимки (*.png *.jpg *.bmp)</translation>
    </message>
    <message>
        <source>&amp;All</source>
        <translation>&amp;Всё</translation>
    </message>
    <message>
        <source>The whole period</source>
        <translation>Весь период</translation>
    </message>
</context>
<context>
    <name>ReportModel</name>
    <message>
        <source>Trip</source>
        <translation>Поездка</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Стоянка</translation>
    </message>
    <message>
        <source>No data</source>
        <translation>Нет данных</translation>
    </message>
    <message>
        <source>Speeding</source>
        <translation>Превышение скорости</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>Тревога</translation>
    </message>
    <message>
        <source>Summary</source>
        <translation>Сводка</translation>
    </message>
    <message>
        <source>Trips and stops</source>
        <translation>Поездки и стоянки</translation>
    </message>
    <message>
        <source>Alarms</source>
        <translation>Тревоги</translation>
    </message>
    <message>
        <source>Object</source>
        <translation>Объект</translation>
    </message>
    <message>
        <source>Distance, km</source>
        <translation>Путь, км</translation>
    </message>
    <message>
        <source>Moving</source>
        <translation>В движении</translation>
    </message>
    <message>
        <source>Stops</source>
        <translation>Стоянок</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Стоял</translation>
    </message>
    <message>
        <source>Top speed, km/h</source>
        <translation>Макс. скорость, км/ч</translation>
    </message>
    <message>
        <source>Total</source>
        <translation>Итого</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Что</translation>
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
        <source>Duration</source>
        <translation>Длительность</translation>
    </message>
    <message>
        <source>Where from</source>
        <translation>Откуда</translation>
    </message>
    <message>
        <source>Where to</source>
        <translation>Куда</translation>
    </message>
    <message>
        <source>Trips: %1, stops: %2</source>
        <translation>Поездок: %1, стоянок: %2</translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Re&amp;port:</source>
        <translation>О&amp;тчёт:</translation>
    </message>
    <message>
        <source>&amp;CSV…</source>
        <translation>&amp;CSV…</translation>
    </message>
    <message>
        <source>Comma-separated values (*.csv)</source>
        <translation>Значения через запятую (*.csv)</translation>
    </message>
    <message>
        <source>report.csv</source>
        <translation>отчёт.csv</translation>
    </message>
    <message>
        <source>P&amp;DF…</source>
        <translation>P&amp;DF…</translation>
    </message>
    <message>
        <source>PDF (*.pdf)</source>
        <translation>PDF (*.pdf)</translation>
    </message>
    <message>
        <source>report.pdf</source>
        <translation>отчёт.pdf</translation>
    </message>
    <message>
        <source>Pr&amp;int…</source>
        <translation>П&amp;ечать…</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Отчёт</translation>
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
        <source>Zone</source>
        <translation>Часовой пояс</translation>
    </message>
    <message>
        <source>Id</source>
        <translation>Номер</translation>
    </message>
    <message>
        <source>Save the report</source>
        <translation>Сохранить отчёт</translation>
    </message>
    <message>
        <source>Sa&amp;ve</source>
        <translation>Со&amp;хранить</translation>
    </message>
</context>
<context>
    <name>Series</name>
    <message>
        <source>Speed, km/h</source>
        <translation>Скорость, км/ч</translation>
    </message>
    <message>
        <source>Supply, V</source>
        <translation>Питание, В</translation>
    </message>
    <message>
        <source>Sensor %1</source>
        <translation>Датчик %1</translation>
    </message>
</context>
<context>
    <name>StateTableModel</name>
    <message>
        <source>Object</source>
        <translation>Объект</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Время</translation>
    </message>
    <message>
        <source>Speed, km/h</source>
        <translation>Скорость, км/ч</translation>
    </message>
    <message>
        <source>Course, °</source>
        <translation>Курс, °</translation>
    </message>
    <message>
        <source>Supply, V</source>
        <translation>Питание, В</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>Тревога</translation>
    </message>
    <message>
        <source>alarm</source>
        <translation>тревога</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Состояние</translation>
    </message>
    <message>
        <source>Age</source>
        <translation>Давность</translation>
    </message>
    <message>
        <source>new alarm</source>
        <translation>новая тревога</translation>
    </message>
</context>
<context>
    <name>TrackPlayer</name>
    <message>
        <source>× %1</source>
        <translation>× %1</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Скорость</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>Выбр&amp;ать…</translation>
    </message>
    <message>
        <source>Other objects or another period</source>
        <translation>Другие объекты или другой период</translation>
    </message>
    <message>
        <source>End the replay</source>
        <translation>Завершить воспроизведение</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Пауза</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Пуск</translation>
    </message>
</context>
</TS>
