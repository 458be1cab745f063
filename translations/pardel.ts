<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>Calendar</name>
    <message>
        <source>Input day</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Today</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Today is </source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DialogObjsFromTo</name>
    <message>
        <source>Only Player</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only Reports</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Player with Reports</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remember selection</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View logs</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>View packets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select objects</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>From</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>To</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calendar</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search objects</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Previous</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match not found</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TUtils</name>
    <message>
        <source>Unknow</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TreeObjCheckable</name>
    <message>
        <source>Select/Deselect all</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TreeObjCheckableE</name>
    <message>
        <source>Select/Deselect all</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>fdPassword</name>
    <message>
        <source>Login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Login name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
