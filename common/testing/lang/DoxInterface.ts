<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
<context>
    <name>Tests</name>
    <message id="ErrorCodes.21">
        <source>The file could not be found.</source>
        <translation>Die Datei wurde nicht gefunden.</translation>
    </message>
</context>
</TS>
