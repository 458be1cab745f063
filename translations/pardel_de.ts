<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Calendar</name>
    <message>
        <source>Input day</source>
        <translation>Tag wählen</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Today is </source>
        <translation>Heute ist der </translation>
    </message>
</context>
<context>
    <name>DialogObjsFromTo</name>
    <message>
        <source>Only Player</source>
        <translation>Nur Wiedergabe</translation>
    </message>
    <message>
        <source>Only Reports</source>
        <translation>Nur Berichte</translation>
    </message>
    <message>
        <source>Player with Reports</source>
        <translation>Wiedergabe mit Berichten</translation>
    </message>
    <message>
        <source>Remember selection</source>
        <translation>Auswahl merken</translation>
    </message>
    <message>
        <source>View logs</source>
        <translation>Protokolle anzeigen</translation>
    </message>
    <message>
        <source>View packets</source>
        <translation>Pakete anzeigen</translation>
    </message>
    <message>
        <source>Find</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>Select objects</source>
        <translation>Objekte auswählen</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Bis</translation>
    </message>
    <message>
        <source>Calendar</source>
        <translation>Kalender</translation>
    </message>
    <message>
        <source>Search objects</source>
        <translation>Objekte suchen</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Match: %1</source>
        <translation>Treffer: %1</translation>
    </message>
    <message>
        <source>Match not found</source>
        <translation>Kein Treffer</translation>
    </message>
</context>
<context>
    <name>TUtils</name>
    <message>
        <source>Unknow</source>
        <translation>Unbekannt</translation>
    </message>
</context>
<context>
    <name>TreeObjCheckable</name>
    <message>
        <source>Select/Deselect all</source>
        <translation>Alle auswählen / abwählen</translation>
    </message>
</context>
<context>
    <name>TreeObjCheckableE</name>
    <message>
        <source>Select/Deselect all</source>
        <translation>Alle auswählen / abwählen</translation>
    </message>
</context>
<context>
    <name>fdPassword</name>
    <message>
        <source>Login</source>
        <translation>Anmeldung</translation>
    </message>
    <message>
        <source>Login name</source>
        <translation>Benutzer</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
</context>
</TS>
