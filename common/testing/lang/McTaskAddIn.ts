<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
<context>
    <name>Tests</name>
    <message id="TS.1023">
        <source>Convert Files</source>
        <translation>Dateien konvertieren</translation>
    </message>
    <message id="TS.1024">
        <source>Empty stays English</source>
        <translation></translation>
    </message>
    <message id="TS.61">
        <source>Adobe PDF (*.pdf)</source>
        <translation>Adobe-PDF-Dokument (*.pdf)</translation>
    </message>
    <message id="TS.78">
        <source>VRML (*.wrl)</source>
        <translation>VRML-Welt (*.wrl)</translation>
    </message>
    <message id="TS.161">
        <source>Select Files and Folders for %s</source>
        <translation>Auswahl für %s</translation>
    </message>
    <message id="TS.5">
        <source>Select Files</source>
        <translation>Dateien wählen</translation>
    </message>
    <message id="TS.Part">
        <source>Part</source>
        <translation>Teil</translation>
    </message>
    <message id="TS.123">
        <source>Example</source>
        <translation>Beispiel</translation>
    </message>
    <message id="TS.124">
        <source>Count</source>
        <translation>Anzahl</translation>
    </message>
    <message id="RefDlg.123">
        <source>Referenced version</source>
        <translation>Referenzierte Version</translation>
    </message>
    <message id="RefDlg.124">
        <source>Latest version</source>
        <translation>Neueste Version</translation>
    </message>
    <message id="MenuCommandDlg.IDOK">
        <source>OK</source>
        <translation>&amp;OK</translation>
    </message>
    <message id="MenuCommandDlg.IDC_CAPTION">
        <source>Menu Command</source>
        <translation>Menübefehl</translation>
    </message>
    <message id="MenuCommandDlg.caption">
        <source>Menu Command</source>
        <translation>Menübefehl</translation>
    </message>
    <message id="MenuCommandDlg.menuTextLabel">
        <source>Menu command:</source>
        <translation>Befehl:</translation>
    </message>
    <message id="MenuCommandDlg.displayCheck">
        <source>Display</source>
        <translation>Anzeigen</translation>
    </message>
    <message id="MenuCommandDlg.box">
        <source>Group</source>
        <translation>Gruppe</translation>
    </message>
    <message id="OtherDlg.plainLabel">
        <source>Plain</source>
        <translation>nicht hier</translation>
    </message>
    <message id="SelectionDlg.addFiles213">
        <source>Add Files...</source>
        <translation>Dateien hinzufügen...</translation>
    </message>
</context>
</TS>
