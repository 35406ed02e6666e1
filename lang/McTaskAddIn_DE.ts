<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en_GB">
<context>
    <name>TS</name>
    <message id="TS.ACIS">
        <source>ACIS</source>
        <translation>ACIS</translation>
    </message>
    <message id="TS.Adobe Illustrator Files">
        <source>Adobe Illustrator Files</source>
        <translation>Adobe Illustrator-Dateien</translation>
    </message>
    <message id="TS.Adobe Photoshop Files">
        <source>Adobe Photoshop Files</source>
        <translation>Adobe Photoshop-Dateien</translation>
    </message>
    <message id="TS.Assembly">
        <source>Assembly</source>
        <translation>Baugruppe</translation>
    </message>
    <message id="TS.CADKEY">
        <source>CADKEY</source>
        <translation>CADKEY</translation>
    </message>
    <message id="TS.DWG">
        <source>DWG</source>
        <translation>DWG</translation>
    </message>
    <message id="TS.DXF">
        <source>DXF</source>
        <translation>DXF</translation>
    </message>
    <message id="TS.Drawing">
        <source>Drawing</source>
        <translation>Zeichnung</translation>
    </message>
    <message id="TS.IDF">
        <source>IDF</source>
        <translation>IDF</translation>
    </message>
    <message id="TS.IGES">
        <source>IGES</source>
        <translation>IGES</translation>
    </message>
    <message id="TS.Inventor Assembly">
        <source>Inventor Assembly</source>
        <translation>Inventor-Baugruppe</translation>
    </message>
    <message id="TS.Inventor Part">
        <source>Inventor Part</source>
        <translation>Inventor-Teil</translation>
    </message>
    <message id="TS.Korinth Graphics">
        <source>Korinth Graphics</source>
        <translation>Korinth Graphics</translation>
    </message>
    <message id="TS.Lib Feat Part">
        <source>Lib Feat Part</source>
        <translation>Bibliotheks-Feature-Teil</translation>
    </message>
    <message id="TS.Mecadra Files">
        <source>Mecadra Files</source>
        <translation>Mecadra-Dateien</translation>
    </message>
    <message id="TS.Parasolid">
        <source>Parasolid</source>
        <translation>Parasolid</translation>
    </message>
    <message id="TS.Part">
        <source>Part</source>
        <translation>Teil</translation>
    </message>
    <message id="TS.ProE Assembly">
        <source>ProE Assembly</source>
        <translation>ProE-Baugruppe</translation>
    </message>
    <message id="TS.ProE Part">
        <source>ProE Part</source>
        <translation>ProE-Teil</translation>
    </message>
    <message id="TS.Rhino">
        <source>Rhino</source>
        <translation>Rhino</translation>
    </message>
    <message id="TS.STEP AP203/214">
        <source>STEP AP203/214</source>
        <translation>STEP AP203/214</translation>
    </message>
    <message id="TS.STL">
        <source>STL</source>
        <translation>STL</translation>
    </message>
    <message id="TS.Solid Edge Assembly">
        <source>Solid Edge Assembly</source>
        <translation>Solid Edge-Baugruppe</translation>
    </message>
    <message id="TS.Solid Edge Part">
        <source>Solid Edge Part</source>
        <translation>Solid Edge-Teil</translation>
    </message>
    <message id="TS.Template">
        <source>Template</source>
        <translation>Vorlage</translation>
    </message>
    <message id="TS.UGII">
        <source>UGII</source>
        <translation>UGII</translation>
    </message>
    <message id="TS.VDAFS">
        <source>VDAFS</source>
        <translation>VDAFS</translation>
    </message>
    <message id="TS.VRML">
        <source>VRML</source>
        <translation>VRML</translation>
    </message>
    <message id="TS.1">
        <source>&lt;Use default&gt;</source>
        <translation>&lt;Standard verwenden&gt;</translation>
    </message>
    <message id="TS.2">
        <source>Script</source>
        <translation>Skript</translation>
    </message>
    <message id="TS.5">
        <source>Select Files</source>
        <translation>Dateien auswählen</translation>
    </message>
    <message id="TS.6">
        <source>Select a folder:</source>
        <translation>Ordner auswählen:</translation>
    </message>
    <message id="TS.7">
        <source>Please select at least one folder or file.</source>
        <translation>Bitte mindestens einen Ordner oder eine Datei auswählen.</translation>
    </message>
    <message id="TS.12">
        <source>Failed to run Mecadra macro.</source>
        <translation>Das Mecadra-Makro konnte nicht ausgeführt werden.</translation>
    </message>
    <message id="TS.13">
        <source>Printer</source>
        <translation>Drucker</translation>
    </message>
    <message id="TS.14">
        <source>Paper Size and Orientation</source>
        <translation>Papierformat und Ausrichtung</translation>
    </message>
    <message id="TS.15">
        <source>Margins</source>
        <translation>Ränder</translation>
    </message>
    <message id="TS.16">
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message id="TS.17">
        <source>Paper Size</source>
        <translation>Papierformat</translation>
    </message>
    <message id="TS.18">
        <source>Printer Name</source>
        <translation>Druckername</translation>
    </message>
    <message id="TS.19">
        <source>Conversion Settings</source>
        <translation>Konvertierungseinstellungen</translation>
    </message>
    <message id="TS.20">
        <source>File Card</source>
        <translation>Datenkarte</translation>
    </message>
    <message id="TS.21">
        <source>Output File Details</source>
        <translation>Details der Ausgabedatei</translation>
    </message>
    <message id="TS.22">
        <source>Advanced Scripting Options (%s)</source>
        <translation>Erweiterte Skriptoptionen (%s)</translation>
    </message>
    <message id="TS.23">
        <source>Source File Name</source>
        <translation>Name der Quelldatei</translation>
    </message>
    <message id="TS.24">
        <source>Source File Extension</source>
        <translation>Erweiterung der Quelldatei</translation>
    </message>
    <message id="TS.25">
        <source>Configuration Name</source>
        <translation>Name der Konfiguration</translation>
    </message>
    <message id="TS.26">
        <source>Source Folder Path</source>
        <translation>Pfad des Quellordners</translation>
    </message>
    <message id="TS.27">
        <source>Vault Root Folder Path</source>
        <translation>Pfad des Tresor-Stammordners</translation>
    </message>
    <message id="TS.28">
        <source>Millimeters</source>
        <translation>Millimeter</translation>
    </message>
    <message id="TS.29">
        <source>Centimeters</source>
        <translation>Zentimeter</translation>
    </message>
    <message id="TS.30">
        <source>Meters</source>
        <translation>Meter</translation>
    </message>
    <message id="TS.31">
        <source>Inches</source>
        <translation>Zoll</translation>
    </message>
    <message id="TS.32">
        <source>Feets</source>
        <translation>Fuß</translation>
    </message>
    <message id="TS.33">
        <source>Trimmed Surface (type 144)</source>
        <translation>Getrimmte Fläche (Typ 144)</translation>
    </message>
    <message id="TS.34">
        <source>Manifold Solid B-rep Objectsurface (type 186)</source>
        <translation>Mannigfaltiger B-Rep-Volumenkörper (Typ 186)</translation>
    </message>
    <message id="TS.35">
        <source>B-Splines (Entity type 126)</source>
        <translation>B-Splines (Elementtyp 126)</translation>
    </message>
    <message id="TS.36">
        <source>Parametric Splines (Entity type 112)</source>
        <translation>Parametrische Splines (Elementtyp 112)</translation>
    </message>
    <message id="TS.37">
        <source>STANDARD</source>
        <translation>STANDARD</translation>
    </message>
    <message id="TS.38">
        <source>NURBS</source>
        <translation>NURBS</translation>
    </message>
    <message id="TS.39">
        <source>ANSYS</source>
        <translation>ANSYS</translation>
    </message>
    <message id="TS.40">
        <source>VERANT</source>
        <translation>VERANT</translation>
    </message>
    <message id="TS.41">
        <source>MASCAM</source>
        <translation>MASCAM</translation>
    </message>
    <message id="TS.42">
        <source>SURFCAM</source>
        <translation>SURFCAM</translation>
    </message>
    <message id="TS.43">
        <source>SMARTCAM</source>
        <translation>SMARTCAM</translation>
    </message>
    <message id="TS.44">
        <source>TEKSOFT</source>
        <translation>TEKSOFT</translation>
    </message>
    <message id="TS.45">
        <source>ALPHACAM</source>
        <translation>ALPHACAM</translation>
    </message>
    <message id="TS.46">
        <source>MULTICAM</source>
        <translation>MULTICAM</translation>
    </message>
    <message id="TS.47">
        <source>ALIAS</source>
        <translation>ALIAS</translation>
    </message>
    <message id="TS.48">
        <source>Black &amp; white (bilevel)</source>
        <translation>Schwarzweiß (zweistufig)</translation>
    </message>
    <message id="TS.49">
        <source>RGB full color</source>
        <translation>RGB-Vollfarbe</translation>
    </message>
    <message id="TS.50">
        <source>Gray scale</source>
        <translation>Graustufen</translation>
    </message>
    <message id="TS.51">
        <source>Uncompressed</source>
        <translation>Unkomprimiert</translation>
    </message>
    <message id="TS.52">
        <source>Packbits</source>
        <translation>Packbits</translation>
    </message>
    <message id="TS.53">
        <source>Group 4 Fax</source>
        <translation>Fax Gruppe 4</translation>
    </message>
    <message id="TS.54">
        <source>Default</source>
        <translation>Standard</translation>
    </message>
    <message id="TS.55">
        <source>Configurations</source>
        <translation>Konfigurationen</translation>
    </message>
    <message id="TS.56">
        <source>Sheets</source>
        <translation>Blätter</translation>
    </message>
    <message id="TS.57">
        <source>&lt;Prompt the user&gt;</source>
        <translation>&lt;Benutzer fragen&gt;</translation>
    </message>
    <message id="TS.58">
        <source>Scene Markup (*.scnxml)</source>
        <translation>Scene Markup (*.scnxml)</translation>
    </message>
    <message id="TS.59">
        <source>ACIS (*.sat)</source>
        <translation>ACIS (*.sat)</translation>
    </message>
    <message id="TS.60">
        <source>Adobe Illustrator (*.ai)</source>
        <translation>Adobe Illustrator (*.ai)</translation>
    </message>
    <message id="TS.61">
        <source>Adobe PDF (*.pdf)</source>
        <translation>Adobe PDF (*.pdf)</translation>
    </message>
    <message id="TS.62">
        <source>Adobe Photoshop (*.psd)</source>
        <translation>Adobe Photoshop (*.psd)</translation>
    </message>
    <message id="TS.63">
        <source>Korinth Graphics (*.kgr)</source>
        <translation>Korinth Graphics (*.kgr)</translation>
    </message>
    <message id="TS.64">
        <source>AutoCAD DXF (*.dxf)</source>
        <translation>AutoCAD DXF (*.dxf)</translation>
    </message>
    <message id="TS.65">
        <source>AutoCAD DWG (*.dwg)</source>
        <translation>AutoCAD DWG (*.dwg)</translation>
    </message>
    <message id="TS.66">
        <source>Glimpse (*.gprt; *.gasm; *.glmp)</source>
        <translation>Glimpse (*.gprt; *.gasm; *.glmp)</translation>
    </message>
    <message id="TS.67">
        <source>ZPK-File (*.zpk)</source>
        <translation>ZPK-Datei (*.zpk)</translation>
    </message>
    <message id="TS.68">
        <source>HOOPS HSF (*.hsf)</source>
        <translation>HOOPS HSF (*.hsf)</translation>
    </message>
    <message id="TS.69">
        <source>IGES (*.igs)</source>
        <translation>IGES (*.igs)</translation>
    </message>
    <message id="TS.70">
        <source>JPEG (*.jpg)</source>
        <translation>JPEG (*.jpg)</translation>
    </message>
    <message id="TS.71">
        <source>Microsoft XAML (*.xaml)</source>
        <translation>Microsoft XAML (*.xaml)</translation>
    </message>
    <message id="TS.72">
        <source>Parasolid (*.x_t)</source>
        <translation>Parasolid (*.x_t)</translation>
    </message>
    <message id="TS.73">
        <source>Parasolid Binary (*.x_b)</source>
        <translation>Parasolid binär (*.x_b)</translation>
    </message>
    <message id="TS.74">
        <source>STL (*.stl)</source>
        <translation>STL (*.stl)</translation>
    </message>
    <message id="TS.75">
        <source>TIF (*.tif)</source>
        <translation>TIF (*.tif)</translation>
    </message>
    <message id="TS.76">
        <source>Universal 3D (*.u3d)</source>
        <translation>Universal 3D (*.u3d)</translation>
    </message>
    <message id="TS.77">
        <source>VDAFS (*.vda)</source>
        <translation>VDAFS (*.vda)</translation>
    </message>
    <message id="TS.78">
        <source>VRML (*.wrl)</source>
        <translation>VRML (*.wrl)</translation>
    </message>
    <message id="TS.79">
        <source>Destination Variable</source>
        <translation>Zielvariable</translation>
    </message>
    <message id="TS.80">
        <source>Source</source>
        <translation>Quelle</translation>
    </message>
    <message id="TS.81">
        <source>Source File Path</source>
        <translation>Pfad der Quelldatei</translation>
    </message>
    <message id="TS.82">
        <source>Source Configuration</source>
        <translation>Konfiguration der Quelle</translation>
    </message>
    <message id="TS.83">
        <source>Source Revision Number</source>
        <translation>Revisionsnummer der Quelle</translation>
    </message>
    <message id="TS.84">
        <source>Source Version Number</source>
        <translation>Versionsnummer der Quelle</translation>
    </message>
    <message id="TS.85">
        <source>Source Workflow State</source>
        <translation>Workflow-Status der Quelle</translation>
    </message>
    <message id="TS.86">
        <source>Conversion Date and Time</source>
        <translation>Datum und Uhrzeit der Konvertierung</translation>
    </message>
    <message id="TS.87">
        <source>Free Text</source>
        <translation>Freier Text</translation>
    </message>
    <message id="TS.88">
        <source>Task Instance GUID</source>
        <translation>GUID der Aufgabeninstanz</translation>
    </message>
    <message id="TS.89">
        <source>File Conversion</source>
        <translation>Dateikonvertierung</translation>
    </message>
    <message id="TS.90">
        <source>Printing</source>
        <translation>Drucken</translation>
    </message>
    <message id="TS.91">
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message id="TS.92">
        <source>Print</source>
        <translation>Drucken</translation>
    </message>
    <message id="TS.95">
        <source>Reason:</source>
        <translation>Grund:</translation>
    </message>
    <message id="TS.96">
        <source>Invalid argument provided in macro.</source>
        <translation>Ungültiges Argument im Makro.</translation>
    </message>
    <message id="TS.97">
        <source>Macros are disabled.</source>
        <translation>Makros sind deaktiviert.</translation>
    </message>
    <message id="TS.98">
        <source>Out of memory.</source>
        <translation>Nicht genügend Arbeitsspeicher.</translation>
    </message>
    <message id="TS.99">
        <source>Invalid procedure name.</source>
        <translation>Ungültiger Prozedurname.</translation>
    </message>
    <message id="TS.100">
        <source>Invalid property type.</source>
        <translation>Ungültiger Eigenschaftstyp.</translation>
    </message>
    <message id="TS.101">
        <source>Sub or Function expected.</source>
        <translation>Sub oder Function erwartet.</translation>
    </message>
    <message id="TS.102">
        <source>Invalid parameter count.</source>
        <translation>Ungültige Anzahl von Parametern.</translation>
    </message>
    <message id="TS.103">
        <source>Invalid variable type.</source>
        <translation>Ungültiger Variablentyp.</translation>
    </message>
    <message id="TS.104">
        <source>Unhandled exception.</source>
        <translation>Unbehandelte Ausnahme.</translation>
    </message>
    <message id="TS.105">
        <source>Value overflow.</source>
        <translation>Wertüberlauf.</translation>
    </message>
    <message id="TS.106">
        <source>Type mismatch.</source>
        <translation>Typen unverträglich.</translation>
    </message>
    <message id="TS.107">
        <source>Required parameter missing.</source>
        <translation>Erforderlicher Parameter fehlt.</translation>
    </message>
    <message id="TS.108">
        <source>Call failed.</source>
        <translation>Aufruf fehlgeschlagen.</translation>
    </message>
    <message id="TS.109">
        <source>Invalid index provided.</source>
        <translation>Ungültiger Index angegeben.</translation>
    </message>
    <message id="TS.110">
        <source>Permission denied.</source>
        <translation>Zugriff verweigert.</translation>
    </message>
    <message id="TS.111">
        <source>Too many open files.</source>
        <translation>Zu viele geöffnete Dateien.</translation>
    </message>
    <message id="TS.112">
        <source>File save failed.</source>
        <translation>Speichern der Datei fehlgeschlagen.</translation>
    </message>
    <message id="TS.113">
        <source>Converted Files</source>
        <translation>Konvertierte Dateien</translation>
    </message>
    <message id="TS.114">
        <source>Printed Files</source>
        <translation>Gedruckte Dateien</translation>
    </message>
    <message id="TS.115">
        <source>Selected Files</source>
        <translation>Ausgewählte Dateien</translation>
    </message>
    <message id="TS.116">
        <source>Source File</source>
        <translation>Quelldatei</translation>
    </message>
    <message id="TS.117">
        <source>File Name</source>
        <translation>Dateiname</translation>
    </message>
    <message id="TS.118">
        <source>Configuration</source>
        <translation>Konfiguration</translation>
    </message>
    <message id="TS.119">
        <source>Printer</source>
        <translation>Drucker</translation>
    </message>
    <message id="TS.120">
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message id="TS.121">
        <source>Found in</source>
        <translation>Gefunden in</translation>
    </message>
    <message id="TS.122">
        <source>Output File</source>
        <translation>Ausgabedatei</translation>
    </message>
    <message id="TS.123">
        <source>Example</source>
        <translation>Beispiel</translation>
    </message>
    <message id="TS.124">
        <source>You must restart the task property dialog box in order to see the new user interface.</source>
        <translation>Die neue Oberfläche erscheint erst, wenn der Dialog der Aufgabeneigenschaften neu geöffnet wird.</translation>
    </message>
    <message id="TS.125">
        <source>Enter number of copies to print.</source>
        <translation>Anzahl der zu druckenden Kopien eingeben.</translation>
    </message>
    <message id="TS.126">
        <source>Total: %1</source>
        <translation>Gesamt: %1</translation>
    </message>
    <message id="TS.127">
        <source>Are you sure you want to discard any changes you have made to the script?</source>
        <translation>Sollen alle Änderungen am Skript wirklich verworfen werden?</translation>
    </message>
    <message id="TS.128">
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message id="TS.129">
        <source>Menu Command</source>
        <translation>Menübefehl</translation>
    </message>
    <message id="TS.130">
        <source>Source File Revision</source>
        <translation>Revision der Quelldatei</translation>
    </message>
    <message id="TS.131">
        <source>Source File Version</source>
        <translation>Version der Quelldatei</translation>
    </message>
    <message id="TS.132">
        <source>Source File Workflow State</source>
        <translation>Workflow-Status der Quelldatei</translation>
    </message>
    <message id="TS.133">
        <source>Todays Date</source>
        <translation>Heutiges Datum</translation>
    </message>
    <message id="TS.134">
        <source>Please enter menu command.</source>
        <translation>Bitte einen Menübefehl eingeben.</translation>
    </message>
    <message id="TS.135">
        <source>Logs</source>
        <translation>Protokolle</translation>
    </message>
    <message id="TS.136">
        <source>Convert Files</source>
        <translation>Dateien konvertieren</translation>
    </message>
    <message id="TS.137">
        <source>Print Files</source>
        <translation>Dateien drucken</translation>
    </message>
    <message id="TS.138">
        <source>Execute Script</source>
        <translation>Skript ausführen</translation>
    </message>
    <message id="TS.139">
        <source>Converts Mecadra files from one format to another</source>
        <translation>Konvertiert Mecadra-Dateien von einem Format in ein anderes</translation>
    </message>
    <message id="TS.140">
        <source>Prints selected documents with Mecadra</source>
        <translation>Druckt die ausgewählten Dokumente mit Mecadra</translation>
    </message>
    <message id="TS.141">
        <source>Executes script on selected documents</source>
        <translation>Führt ein Skript für die ausgewählten Dokumente aus</translation>
    </message>
    <message id="TS.142">
        <source>STEP (*.step)</source>
        <translation>STEP (*.step)</translation>
    </message>
    <message id="TS.143">
        <source>No file selected.</source>
        <translation>Keine Datei ausgewählt.</translation>
    </message>
    <message id="TS.144">
        <source>No file converted.</source>
        <translation>Keine Datei konvertiert.</translation>
    </message>
    <message id="TS.160">
        <source>Source File Path</source>
        <translation>Pfad der Quelldatei</translation>
    </message>
    <message id="TS.161">
        <source>Select Files and Folders for %s</source>
        <translation>Dateien und Ordner für %s auswählen</translation>
    </message>
    <message id="TS.164">
        <source>Adding files to vault...</source>
        <translation>Dateien werden dem Tresor hinzugefügt...</translation>
    </message>
    <message id="TS.165">
        <source>Task finished with errors. Please see the log-file for more details.</source>
        <translation>Die Aufgabe wurde mit Fehlern beendet. Einzelheiten stehen in der Protokolldatei.</translation>
    </message>
    <message id="TS.166">
        <source>Please select at least one file.</source>
        <translation>Bitte mindestens eine Datei auswählen.</translation>
    </message>
    <message id="TS.168">
        <source>No printer selected.</source>
        <translation>Kein Drucker ausgewählt.</translation>
    </message>
    <message id="TS.170">
        <source>All sheets</source>
        <translation>Alle Blätter</translation>
    </message>
    <message id="TS.171">
        <source>All configurations</source>
        <translation>Alle Konfigurationen</translation>
    </message>
    <message id="TS.9001">
        <source>Mecadra %1 is not installed.</source>
        <translation>Mecadra %1 ist nicht installiert.</translation>
    </message>
    <message id="TS.9002">
        <source>Failed to start Mecadra %1.</source>
        <translation>Mecadra %1 konnte nicht gestartet werden.</translation>
    </message>
    <message id="TS.9003">
        <source>Failed to get Mecadra revision number.</source>
        <translation>Die Revisionsnummer von Mecadra konnte nicht ermittelt werden.</translation>
    </message>
    <message id="TS.9004">
        <source>Failed to attach event handlers to Mecadra.</source>
        <translation>Die Ereignisbehandlung konnte nicht an Mecadra angebunden werden.</translation>
    </message>
    <message id="TS.9005">
        <source>Failed to set Mecadra main window as invisible.</source>
        <translation>Das Hauptfenster von Mecadra konnte nicht unsichtbar gemacht werden.</translation>
    </message>
    <message id="TS.9006">
        <source>Failed to close Mecadra application.</source>
        <translation>Mecadra konnte nicht beendet werden.</translation>
    </message>
    <message id="TS.9007">
        <source>The macro did not finish within %1 seconds.</source>
        <translation>Das Makro wurde nicht innerhalb von %1 Sekunden beendet.</translation>
    </message>
    <message id="TS.9008">
        <source>File open failed.</source>
        <translation>Öffnen der Datei fehlgeschlagen.</translation>
    </message>
</context>
<context>
    <name>AdvancedConvOpDlg</name>
    <message id="AdvancedConvOpDlg.helpButton">
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message id="AdvancedConvOpDlg.resetAllButton">
        <source>&amp;Reset All</source>
        <translation>Alles &amp;zurücksetzen</translation>
    </message>
</context>
<context>
    <name>ConfsTemplateDlg</name>
    <message id="ConfsTemplateDlg.allInOneRadio">
        <source>Include all configurations in the same output file</source>
        <translation>Alle Konfigurationen in dieselbe Ausgabedatei aufnehmen</translation>
    </message>
    <message id="ConfsTemplateDlg.allRadio">
        <source>All configurations</source>
        <translation>Alle Konfigurationen</translation>
    </message>
    <message id="ConfsTemplateDlg.allowFileCheck">
        <source>Allow the user to change this setting</source>
        <translation>Benutzer darf diese Einstellung ändern</translation>
    </message>
    <message id="ConfsTemplateDlg.allowOutputCheck">
        <source>Allow the user to change this setting</source>
        <translation>Benutzer darf diese Einstellung ändern</translation>
    </message>
    <message id="ConfsTemplateDlg.fileGroup">
        <source>Multi-configuration output</source>
        <translation>Ausgabe mehrerer Konfigurationen</translation>
    </message>
    <message id="ConfsTemplateDlg.lastActiveRadio">
        <source>Last active configuration</source>
        <translation>Zuletzt aktive Konfiguration</translation>
    </message>
    <message id="ConfsTemplateDlg.namedRadio">
        <source>Named configuration (use * as wildcard):</source>
        <translation>Konfiguration mit Namen (* als Platzhalter):</translation>
    </message>
    <message id="ConfsTemplateDlg.onePerItemRadio">
        <source>Create one output file per configuration</source>
        <translation>Eine Ausgabedatei je Konfiguration erstellen</translation>
    </message>
    <message id="ConfsTemplateDlg.outputGroup">
        <source>Configurations to output</source>
        <translation>Auszugebende Konfigurationen</translation>
    </message>
</context>
<context>
    <name>ConvOpACISDlg</name>
    <message id="ConvOpACISDlg.AcisGeometry_0">
        <source>Solid/Surface geometry</source>
        <translation>Volumen-/Flächengeometrie</translation>
    </message>
    <message id="ConvOpACISDlg.AcisGeometry_1">
        <source>3D curves</source>
        <translation>3D-Kurven</translation>
    </message>
    <message id="ConvOpACISDlg.AcisGeometry_sketches">
        <source>Export sketch entities</source>
        <translation>Skizzenelemente exportieren</translation>
    </message>
    <message id="ConvOpACISDlg.AcisOutputAsUnit_label">
        <source>Output as:</source>
        <translation>Ausgeben als:</translation>
    </message>
    <message id="ConvOpACISDlg.AcisVersion_label">
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
</context>
<context>
    <name>ConvOpGlimpseDlg</name>
    <message id="ConvOpGlimpseDlg.GlmpAllowExportOfSTL">
        <source>Allow export to STL for parts &amp;&amp; assemblies</source>
        <translation>Export nach STL für Teile &amp;&amp; Baugruppen erlauben</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpAllowExportOfSTL_note">
        <source>Readers of the file may save its parts and assemblies again as STL.</source>
        <translation>Empfänger der Datei dürfen ihre Teile und Baugruppen wieder als STL speichern.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpOkayToMeasure">
        <source>Okay to measure this Glimpse file</source>
        <translation>Messen in dieser Glimpse-Datei erlauben</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpOkayToMeasure_note">
        <source>Readers of the file may measure distances and angles in its geometry.</source>
        <translation>Empfänger der Datei dürfen Abstände und Winkel in ihrer Geometrie messen.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpRecalcMotionStudies">
        <source>Recalculate the motion study if the results are out of date.</source>
        <translation>Bewegungsstudie neu berechnen, wenn die Ergebnisse veraltet sind.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpRecalcMotionStudies_note">
        <source>Otherwise results that are out of date are saved as they are.</source>
        <translation>Sonst werden veraltete Ergebnisse unverändert gespeichert.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveBOM">
        <source>Save Bill of Materials features to Glimpse file</source>
        <translation>Stücklisten-Features in der Glimpse-Datei speichern</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveBOM_note">
        <source>The bills of materials of the document can be read in the file.</source>
        <translation>Die Stücklisten des Dokuments sind in der Datei lesbar.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudies">
        <source>Save Motion Studies to Glimpse file</source>
        <translation>Bewegungsstudien in der Glimpse-Datei speichern</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudiesToAllConfs_0">
        <source>Save each motion study in every configuration.</source>
        <translation>Jede Bewegungsstudie in jeder Konfiguration speichern.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudiesToAllConfs_1">
        <source>Save only in last calculated configuration.</source>
        <translation>Nur in der zuletzt berechneten Konfiguration speichern.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudies_note">
        <source>The motion studies of an assembly can be played in the file.</source>
        <translation>Die Bewegungsstudien einer Baugruppe lassen sich in der Datei abspielen.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveShadedData">
        <source>Save shaded data in drawings</source>
        <translation>Schattierte Daten in Zeichnungen speichern</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveShadedData_note">
        <source>Shaded views of drawings stay shaded in the file; the file grows.</source>
        <translation>Schattierte Ansichten von Zeichnungen bleiben in der Datei schattiert; die Datei wird größer.</translation>
    </message>
</context>
<context>
    <name>ConvOpIGESDlg</name>
    <message id="ConvOpIGESDlg.IgesComponentsIntoOneFile">
        <source>Save all components of an assembly in one file</source>
        <translation>Alle Komponenten einer Baugruppe in einer Datei speichern</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportFreeCurves">
        <source>Export 3D curve features</source>
        <translation>3D-Kurven-Features exportieren</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportSketchEntities">
        <source>Export sketch entities</source>
        <translation>Skizzenelemente exportieren</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportSolidSurface">
        <source>IGES solid/surface entities:</source>
        <translation>IGES-Volumen-/Flächenelemente:</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportWireframe">
        <source>IGES wireframe (3D curves):</source>
        <translation>IGES-Drahtmodell (3D-Kurven):</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesFlattenAssemblyHierarchy">
        <source>Flatten assembly hierarchy</source>
        <translation>Baugruppenhierarchie auflösen</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesHighCurveAccuracy">
        <source>Use high trim curve accuracy</source>
        <translation>Hohe Genauigkeit für Trimmkurven verwenden</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesSystem_label">
        <source>Output as:</source>
        <translation>Ausgeben als:</translation>
    </message>
</context>
<context>
    <name>ConvOpPDFDlg</name>
    <message id="ConvOpPDFDlg.PdfEmbedFonts">
        <source>E&amp;mbed fonts</source>
        <translation>Schriften ei&amp;nbetten</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfHighQuality">
        <source>&amp;High quality</source>
        <translation>&amp;Hohe Qualität</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfInColor">
        <source>&amp;Export PDF in color</source>
        <translation>PDF in &amp;Farbe exportieren</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfPrintHeaderFooter">
        <source>&amp;Print header/footer</source>
        <translation>Kopf-/Fußzeile &amp;drucken</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfUsePrinterLineWeights">
        <source>Use specified printer line &amp;weights</source>
        <translation>Angegebene Drucker-&amp;Linienstärken verwenden</translation>
    </message>
</context>
<context>
    <name>ConvOpParasolidDlg</name>
    <message id="ConvOpParasolidDlg.ParasolidFlattenHierarchy">
        <source>Flatten assembly hierarchy</source>
        <translation>Baugruppenhierarchie auflösen</translation>
    </message>
    <message id="ConvOpParasolidDlg.ParasolidVersion_label">
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
</context>
<context>
    <name>ConvOpSTEPDlg</name>
    <message id="ConvOpSTEPDlg.StepGeometry_0">
        <source>Solid/Surface geometry</source>
        <translation>Volumen-/Flächengeometrie</translation>
    </message>
    <message id="ConvOpSTEPDlg.StepGeometry_1">
        <source>3D curves</source>
        <translation>3D-Kurven</translation>
    </message>
    <message id="ConvOpSTEPDlg.StepGeometry_sketches">
        <source>Export sketch entities</source>
        <translation>Skizzenelemente exportieren</translation>
    </message>
    <message id="ConvOpSTEPDlg.StepVersion_label">
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
</context>
<context>
    <name>ConvOpSTLDlg</name>
    <message id="ConvOpSTLDlg.StlCheckForInterferences">
        <source>Check for interferences</source>
        <translation>Auf Kollisionen prüfen</translation>
    </message>
    <message id="ConvOpSTLDlg.StlComponentsIntoOneFile">
        <source>Save all components of an assembly in a single file</source>
        <translation>Alle Komponenten einer Baugruppe in einer einzigen Datei speichern</translation>
    </message>
    <message id="ConvOpSTLDlg.StlDontTranslatePositive">
        <source>Do not translate STL output data to positive space</source>
        <translation>STL-Ausgabedaten nicht in den positiven Raum verschieben</translation>
    </message>
    <message id="ConvOpSTLDlg.StlOutputAsUnit_label">
        <source>Unit:</source>
        <translation>Einheit:</translation>
    </message>
    <message id="ConvOpSTLDlg.StlOutputAs_0">
        <source>Binary</source>
        <translation>Binär</translation>
    </message>
    <message id="ConvOpSTLDlg.StlOutputAs_1">
        <source>ASCII</source>
        <translation>ASCII</translation>
    </message>
    <message id="ConvOpSTLDlg.StlQuality_0">
        <source>Coarse</source>
        <translation>Grob</translation>
    </message>
    <message id="ConvOpSTLDlg.StlQuality_1">
        <source>Fine</source>
        <translation>Fein</translation>
    </message>
</context>
<context>
    <name>ConvOpTifPsdDlg</name>
    <message id="ConvOpTifPsdDlg.TifCompressionScheme_label">
        <source>Compression scheme:</source>
        <translation>Komprimierungsverfahren:</translation>
    </message>
    <message id="ConvOpTifPsdDlg.TifImageType_label">
        <source>Image type:</source>
        <translation>Bildtyp:</translation>
    </message>
</context>
<context>
    <name>ConvOpVRMLDlg</name>
    <message id="ConvOpVRMLDlg.VrmlOutputAsUnit_label">
        <source>Output as:</source>
        <translation>Ausgeben als:</translation>
    </message>
    <message id="ConvOpVRMLDlg.VrmlSaveAssemblyAsOneFile">
        <source>Save all components of the assembly in a single file</source>
        <translation>Alle Komponenten der Baugruppe in einer einzigen Datei speichern</translation>
    </message>
</context>
<context>
    <name>ConversionSettingsPageDlg</name>
    <message id="ConversionSettingsPageDlg.allowReferencesCheck">
        <source>Allow the user to change this setting</source>
        <translation>Benutzer darf diese Einstellung ändern</translation>
    </message>
    <message id="ConversionSettingsPageDlg.conversionOptionsButton">
        <source>Conversion Options...</source>
        <translation>Konvertierungsoptionen...</translation>
    </message>
    <message id="ConversionSettingsPageDlg.exampleLabel">
        <source>Example:</source>
        <translation>Beispiel:</translation>
    </message>
    <message id="ConversionSettingsPageDlg.formatLabel">
        <source>Output file format:</source>
        <translation>Format der Ausgabedatei:</translation>
    </message>
    <message id="ConversionSettingsPageDlg.latestRadio">
        <source>Use the latest version of the referenced files</source>
        <translation>Neueste Version der referenzierten Dateien verwenden</translation>
    </message>
    <message id="ConversionSettingsPageDlg.pathLabel">
        <source>Output file path:</source>
        <translation>Pfad der Ausgabedatei:</translation>
    </message>
    <message id="ConversionSettingsPageDlg.referencedRadio">
        <source>Use the referenced version of the referenced files ("as built")</source>
        <translation>Referenzierte Version der referenzierten Dateien verwenden ("wie gebaut")</translation>
    </message>
    <message id="ConversionSettingsPageDlg.referencesGroup">
        <source>Source file references</source>
        <translation>Referenzen der Quelldatei</translation>
    </message>
</context>
<context>
    <name>FileCardPageDlg</name>
    <message id="FileCardPageDlg.addButton">
        <source>Add Variable</source>
        <translation>Variable hinzufügen</translation>
    </message>
    <message id="FileCardPageDlg.destinationLabel">
        <source>Destination variable:</source>
        <translation>Zielvariable:</translation>
    </message>
    <message id="FileCardPageDlg.freeTextLabel">
        <source>Free text:</source>
        <translation>Freier Text:</translation>
    </message>
    <message id="FileCardPageDlg.listLabel">
        <source>Variables to update in the output file's card:</source>
        <translation>Zu aktualisierende Variablen in der Datenkarte der Ausgabedatei:</translation>
    </message>
    <message id="FileCardPageDlg.removeButton">
        <source>Remove Variable</source>
        <translation>Variable entfernen</translation>
    </message>
    <message id="FileCardPageDlg.selectedGroup">
        <source>Selected variable</source>
        <translation>Ausgewählte Variable</translation>
    </message>
    <message id="FileCardPageDlg.sourceLabel">
        <source>Source:</source>
        <translation>Quelle:</translation>
    </message>
</context>
<context>
    <name>FileRefTree</name>
    <message id="FileRefTree.Unsupported File Format">
        <source>Unsupported File Format</source>
        <translation>Nicht unterstütztes Dateiformat</translation>
    </message>
    <message id="FileRefTree.configurationColumn">
        <source>Configuration</source>
        <translation>Konfiguration</translation>
    </message>
    <message id="FileRefTree.foundInColumn">
        <source>Found in</source>
        <translation>Gefunden in</translation>
    </message>
    <message id="FileRefTree.nameColumn">
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message id="FileRefTree.stateColumn">
        <source>State</source>
        <translation>Status</translation>
    </message>
    <message id="FileRefTree.versionColumn">
        <source>Version</source>
        <translation>Version</translation>
    </message>
</context>
<context>
    <name>FilesDlg</name>
    <message id="FilesDlg.advancedButton">
        <source>Advanced Scripting Options...</source>
        <translation>Erweiterte Skriptoptionen...</translation>
    </message>
    <message id="FilesDlg.autoAllRadio">
        <source>All parts, sub-assemblies, and drawings</source>
        <translation>Alle Teile, Unterbaugruppen und Zeichnungen</translation>
    </message>
    <message id="FilesDlg.autoDrawingsRadio">
        <source>All drawings</source>
        <translation>Alle Zeichnungen</translation>
    </message>
    <message id="FilesDlg.autoModelsRadio">
        <source>Parts and sub-assemblies only</source>
        <translation>Nur Teile und Unterbaugruppen</translation>
    </message>
    <message id="FilesDlg.autoNoneRadio">
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message id="FilesDlg.autoSelectGroup">
        <source>Auto-select references to print</source>
        <translation>Zu druckende Referenzen automatisch auswählen</translation>
    </message>
    <message id="FilesDlg.browseButton">
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
    <message id="FilesDlg.errorLogLabel">
        <source>Error log folder:</source>
        <translation>Ordner für Fehlerprotokolle:</translation>
    </message>
    <message id="FilesDlg.errorLogNote">
        <source>(Error log files will be named with a unique identifier.)</source>
        <translation>(Fehlerprotokolle erhalten einen eindeutigen Namen.)</translation>
    </message>
    <message id="FilesDlg.latestVersionRadio">
        <source>Use the latest version of referenced files</source>
        <translation>Neueste Version der referenzierten Dateien verwenden</translation>
    </message>
    <message id="FilesDlg.promptVersionRadio">
        <source>Prompt the user</source>
        <translation>Benutzer fragen</translation>
    </message>
    <message id="FilesDlg.referencedVersionRadio">
        <source>Use the referenced version of referenced files ("as built")</source>
        <translation>Referenzierte Version der referenzierten Dateien verwenden ("wie gebaut")</translation>
    </message>
    <message id="FilesDlg.showPrintDialogCheck">
        <source>Show print dialog box</source>
        <translation>Druckdialog anzeigen</translation>
    </message>
    <message id="FilesDlg.versionGroup">
        <source>Version of referenced files</source>
        <translation>Version der referenzierten Dateien</translation>
    </message>
</context>
<context>
    <name>MarginsDlg</name>
    <message id="MarginsDlg.bottomLabel">
        <source>Bottom:</source>
        <translation>Unten:</translation>
    </message>
    <message id="MarginsDlg.bottomUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="MarginsDlg.fixedFooterRadio">
        <source>Always use the following footer:</source>
        <translation>Immer folgende Fußzeile verwenden:</translation>
    </message>
    <message id="MarginsDlg.fixedHeaderRadio">
        <source>Always use the following header:</source>
        <translation>Immer folgende Kopfzeile verwenden:</translation>
    </message>
    <message id="MarginsDlg.fixedMarginsRadio">
        <source>Always use the following size:</source>
        <translation>Immer folgende Größe verwenden:</translation>
    </message>
    <message id="MarginsDlg.footerCenterLabel">
        <source>Center section:</source>
        <translation>Mittlerer Bereich:</translation>
    </message>
    <message id="MarginsDlg.footerGroup">
        <source>Custom footer</source>
        <translation>Eigene Fußzeile</translation>
    </message>
    <message id="MarginsDlg.footerLeftLabel">
        <source>Left section:</source>
        <translation>Linker Bereich:</translation>
    </message>
    <message id="MarginsDlg.footerRightLabel">
        <source>Right section:</source>
        <translation>Rechter Bereich:</translation>
    </message>
    <message id="MarginsDlg.headerCenterLabel">
        <source>Center section:</source>
        <translation>Mittlerer Bereich:</translation>
    </message>
    <message id="MarginsDlg.headerGroup">
        <source>Custom header</source>
        <translation>Eigene Kopfzeile</translation>
    </message>
    <message id="MarginsDlg.headerLeftLabel">
        <source>Left section:</source>
        <translation>Linker Bereich:</translation>
    </message>
    <message id="MarginsDlg.headerRightLabel">
        <source>Right section:</source>
        <translation>Rechter Bereich:</translation>
    </message>
    <message id="MarginsDlg.leftLabel">
        <source>Left:</source>
        <translation>Links:</translation>
    </message>
    <message id="MarginsDlg.leftUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="MarginsDlg.marginsGroup">
        <source>Paper margins</source>
        <translation>Papierränder</translation>
    </message>
    <message id="MarginsDlg.noFooterRadio">
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message id="MarginsDlg.noHeaderRadio">
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message id="MarginsDlg.printerMarginsRadio">
        <source>Use printer's margins</source>
        <translation>Ränder des Druckers verwenden</translation>
    </message>
    <message id="MarginsDlg.promptFooterRadio">
        <source>Prompt the user</source>
        <translation>Benutzer fragen</translation>
    </message>
    <message id="MarginsDlg.promptHeaderRadio">
        <source>Prompt the user</source>
        <translation>Benutzer fragen</translation>
    </message>
    <message id="MarginsDlg.promptMarginsRadio">
        <source>Prompt the user</source>
        <translation>Benutzer fragen</translation>
    </message>
    <message id="MarginsDlg.rightLabel">
        <source>Right:</source>
        <translation>Rechts:</translation>
    </message>
    <message id="MarginsDlg.rightUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="MarginsDlg.topLabel">
        <source>Top:</source>
        <translation>Oben:</translation>
    </message>
    <message id="MarginsDlg.topUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
</context>
<context>
    <name>MenuCommandDlg</name>
    <message id="MenuCommandDlg.displayCheck">
        <source>Display a menu command in the explorer for this task</source>
        <translation>Für diese Aufgabe einen Menübefehl im Explorer anzeigen</translation>
    </message>
    <message id="MenuCommandDlg.helpTextLabel">
        <source>Status bar help text:</source>
        <translation>Hilfetext in der Statusleiste:</translation>
    </message>
    <message id="MenuCommandDlg.menuTextLabel">
        <source>Menu command:</source>
        <translation>Menübefehl:</translation>
    </message>
</context>
<context>
    <name>OutputFileDetailsPageDlg</name>
    <message id="OutputFileDetailsPageDlg.advancedScriptingButton">
        <source>Advanced Scripting Options...</source>
        <translation>Erweiterte Skriptoptionen...</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.browseButton">
        <source>Browse...</source>
        <translation>Durchsuchen...</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.defaultPathLabel">
        <source>Default path:</source>
        <translation>Standardpfad:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.duplicateGroup">
        <source>Duplicate File Name Handling</source>
        <translation>Umgang mit doppelten Dateinamen</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.errorLogHintLabel">
        <source>(Error log files will be named with a unique identifier)</source>
        <translation>(Fehlerprotokolle erhalten einen eindeutigen Namen)</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.errorLogLabel">
        <source>Error logs folder:</source>
        <translation>Ordner für Fehlerprotokolle:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.newVersionRadio">
        <source>Create new version of existing files</source>
        <translation>Neue Version vorhandener Dateien erstellen</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.primaryExampleLabel">
        <source>Example:</source>
        <translation>Beispiel:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.primaryGroup">
        <source>Primary output path</source>
        <translation>Primärer Ausgabepfad</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.promptOutputCheck">
        <source>Allow the user to change the output path</source>
        <translation>Benutzer darf den Ausgabepfad ändern</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.refToSourceCheck">
        <source>Create a reference from the destination file to the source file</source>
        <translation>Referenz von der Zieldatei auf die Quelldatei erstellen</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.replaceRadio">
        <source>Replace exisiting files</source>
        <translation>Vorhandene Dateien ersetzen</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.secondaryExampleLabel">
        <source>Example:</source>
        <translation>Beispiel:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.secondaryGroup">
        <source>Secondary output path</source>
        <translation>Sekundärer Ausgabepfad</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.secondaryHintLabel">
        <source>(Leave this field empty if you only want one copy of the file.)</source>
        <translation>(Dieses Feld leer lassen, wenn nur eine Kopie der Datei gewünscht ist.)</translation>
    </message>
</context>
<context>
    <name>PaperSizeDlg</name>
    <message id="PaperSizeDlg.allowOrientationCheck">
        <source>Allow the user to change the orientation</source>
        <translation>Benutzer darf die Ausrichtung ändern</translation>
    </message>
    <message id="PaperSizeDlg.allowSizeCheck">
        <source>Allow the user to change the size</source>
        <translation>Benutzer darf das Format ändern</translation>
    </message>
    <message id="PaperSizeDlg.defaultSizeLabel">
        <source>Default size:</source>
        <translation>Standardformat:</translation>
    </message>
    <message id="PaperSizeDlg.landscapeRadio">
        <source>Landscape</source>
        <translation>Querformat</translation>
    </message>
    <message id="PaperSizeDlg.orientationGroup">
        <source>Default orientation</source>
        <translation>Standardausrichtung</translation>
    </message>
    <message id="PaperSizeDlg.paperGroup">
        <source>Paper size</source>
        <translation>Papierformat</translation>
    </message>
    <message id="PaperSizeDlg.portraitRadio">
        <source>Portrait</source>
        <translation>Hochformat</translation>
    </message>
    <message id="PaperSizeDlg.useDrawingInfoCheck">
        <source>Use paper size and orientation stored in drawing if available</source>
        <translation>In der Zeichnung gespeichertes Papierformat und Ausrichtung verwenden, falls vorhanden</translation>
    </message>
</context>
<context>
    <name>PrintUIDlg</name>
    <message id="PrintUIDlg.bottomLabel">
        <source>Bottom:</source>
        <translation>Unten:</translation>
    </message>
    <message id="PrintUIDlg.bottomUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.cancelButton">
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message id="PrintUIDlg.caption">
        <source>Print</source>
        <translation>Drucken</translation>
    </message>
    <message id="PrintUIDlg.copiesLabel">
        <source>Number of copies:</source>
        <translation>Anzahl der Kopien:</translation>
    </message>
    <message id="PrintUIDlg.customMarginsRadio">
        <source>Use custom margins:</source>
        <translation>Eigene Ränder verwenden:</translation>
    </message>
    <message id="PrintUIDlg.footerCenterLabel">
        <source>Center section:</source>
        <translation>Mittlerer Bereich:</translation>
    </message>
    <message id="PrintUIDlg.footerGroup">
        <source>Custom footer</source>
        <translation>Eigene Fußzeile</translation>
    </message>
    <message id="PrintUIDlg.footerLeftLabel">
        <source>Left section:</source>
        <translation>Linker Bereich:</translation>
    </message>
    <message id="PrintUIDlg.footerRightLabel">
        <source>Right section:</source>
        <translation>Rechter Bereich:</translation>
    </message>
    <message id="PrintUIDlg.headerCenterLabel">
        <source>Center section:</source>
        <translation>Mittlerer Bereich:</translation>
    </message>
    <message id="PrintUIDlg.headerGroup">
        <source>Custom header</source>
        <translation>Eigene Kopfzeile</translation>
    </message>
    <message id="PrintUIDlg.headerLeftLabel">
        <source>Left section:</source>
        <translation>Linker Bereich:</translation>
    </message>
    <message id="PrintUIDlg.headerRightLabel">
        <source>Right section:</source>
        <translation>Rechter Bereich:</translation>
    </message>
    <message id="PrintUIDlg.helpButton">
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message id="PrintUIDlg.landscapeRadio">
        <source>&amp;Landscape</source>
        <translation>&amp;Querformat</translation>
    </message>
    <message id="PrintUIDlg.leftLabel">
        <source>Left:</source>
        <translation>Links:</translation>
    </message>
    <message id="PrintUIDlg.leftUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.marginsGroup">
        <source>Paper margins</source>
        <translation>Papierränder</translation>
    </message>
    <message id="PrintUIDlg.orientationGroup">
        <source>Orientation</source>
        <translation>Ausrichtung</translation>
    </message>
    <message id="PrintUIDlg.paperLabel">
        <source>Paper &amp;size:</source>
        <translation>Papier&amp;format:</translation>
    </message>
    <message id="PrintUIDlg.portraitRadio">
        <source>P&amp;ortrait</source>
        <translation>&amp;Hochformat</translation>
    </message>
    <message id="PrintUIDlg.printButton">
        <source>Print</source>
        <translation>Drucken</translation>
    </message>
    <message id="PrintUIDlg.printerLabel">
        <source>&amp;Printer:</source>
        <translation>&amp;Drucker:</translation>
    </message>
    <message id="PrintUIDlg.printerMarginsRadio">
        <source>Use printer's margins</source>
        <translation>Ränder des Druckers verwenden</translation>
    </message>
    <message id="PrintUIDlg.rightLabel">
        <source>Right:</source>
        <translation>Rechts:</translation>
    </message>
    <message id="PrintUIDlg.rightUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.topLabel">
        <source>Top:</source>
        <translation>Oben:</translation>
    </message>
    <message id="PrintUIDlg.topUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.totalLabel">
        <source>Total: 0</source>
        <translation>Gesamt: 0</translation>
    </message>
    <message id="PrintUIDlg.useFooterCheck">
        <source>Use custom &amp;footer:</source>
        <translation>Eigene &amp;Fußzeile verwenden:</translation>
    </message>
    <message id="PrintUIDlg.useHeaderCheck">
        <source>&amp;Use custom header:</source>
        <translation>Eigene &amp;Kopfzeile verwenden:</translation>
    </message>
    <message id="PrintUIDlg.versionLabel">
        <source>&amp;Version of references:</source>
        <translation>&amp;Version der Referenzen:</translation>
    </message>
</context>
<context>
    <name>PrinterDlg</name>
    <message id="PrinterDlg.alwaysRadio">
        <source>Always use the following printer name:</source>
        <translation>Immer folgenden Drucker verwenden:</translation>
    </message>
    <message id="PrinterDlg.bySizeRadio">
        <source>Select printer based on paper size:</source>
        <translation>Drucker nach Papierformat auswählen:</translation>
    </message>
    <message id="PrinterDlg.promptRadio">
        <source>Prompt the user with the following options:</source>
        <translation>Benutzer mit folgenden Möglichkeiten fragen:</translation>
    </message>
</context>
<context>
    <name>RefDlg</name>
    <message id="RefDlg.123">
        <source>Referenced version</source>
        <translation>Referenzierte Version</translation>
    </message>
    <message id="RefDlg.124">
        <source>Latest version</source>
        <translation>Neueste Version</translation>
    </message>
</context>
<context>
    <name>ScriptPageDlg</name>
    <message id="ScriptPageDlg.caption">
        <source>Advanced Scripting Options</source>
        <translation>Erweiterte Skriptoptionen</translation>
    </message>
    <message id="ScriptPageDlg.insertMacroButton">
        <source>Insert Macro &gt;</source>
        <translation>Makro einfügen &gt;</translation>
    </message>
    <message id="ScriptPageDlg.kindLabel">
        <source>Task user interface type:</source>
        <translation>Art der Aufgabenoberfläche:</translation>
    </message>
    <message id="ScriptPageDlg.resetButton">
        <source>Reset...</source>
        <translation>Zurücksetzen...</translation>
    </message>
    <message id="ScriptPageDlg.scriptLabel">
        <source>Script to execute in Mecadra:</source>
        <translation>In Mecadra auszuführendes Skript:</translation>
    </message>
    <message id="ScriptPageDlg.versionLabel">
        <source>Mecadra version to use:</source>
        <translation>Zu verwendende Mecadra-Version:</translation>
    </message>
</context>
<context>
    <name>SelectionDlg</name>
    <message id="SelectionDlg.addFiles213">
        <source>Add Files...</source>
        <translation>Dateien hinzufügen...</translation>
    </message>
    <message id="SelectionDlg.addFolder214">
        <source>Add Folder...</source>
        <translation>Ordner hinzufügen...</translation>
    </message>
    <message id="SelectionDlg.caption">
        <source>Select Files and Folders for Task</source>
        <translation>Dateien und Ordner für die Aufgabe auswählen</translation>
    </message>
    <message id="SelectionDlg.label210">
        <source>Selected files and folders:</source>
        <translation>Ausgewählte Dateien und Ordner:</translation>
    </message>
    <message id="SelectionDlg.remove215">
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
</context>
<context>
    <name>SetupDialog</name>
    <message id="SetupDialog.caption">
        <source>Task Properties</source>
        <translation>Aufgabeneigenschaften</translation>
    </message>
</context>
<context>
    <name>SheetsTemplateDlg</name>
    <message id="SheetsTemplateDlg.allInOneRadio">
        <source>Include all sheets in the same output file</source>
        <translation>Alle Blätter in dieselbe Ausgabedatei aufnehmen</translation>
    </message>
    <message id="SheetsTemplateDlg.allRadio">
        <source>All sheets</source>
        <translation>Alle Blätter</translation>
    </message>
    <message id="SheetsTemplateDlg.allowFileCheck">
        <source>Allow the user to change this setting</source>
        <translation>Benutzer darf diese Einstellung ändern</translation>
    </message>
    <message id="SheetsTemplateDlg.allowOutputCheck">
        <source>Allow the user to change this setting</source>
        <translation>Benutzer darf diese Einstellung ändern</translation>
    </message>
    <message id="SheetsTemplateDlg.fileGroup">
        <source>Multi-sheet output</source>
        <translation>Ausgabe mehrerer Blätter</translation>
    </message>
    <message id="SheetsTemplateDlg.lastActiveRadio">
        <source>Last active sheet</source>
        <translation>Zuletzt aktives Blatt</translation>
    </message>
    <message id="SheetsTemplateDlg.namedRadio">
        <source>Named sheet (use * as wildcard):</source>
        <translation>Blatt mit Namen (* als Platzhalter):</translation>
    </message>
    <message id="SheetsTemplateDlg.onePerItemRadio">
        <source>Create one output file per sheet</source>
        <translation>Eine Ausgabedatei je Blatt erstellen</translation>
    </message>
    <message id="SheetsTemplateDlg.outputGroup">
        <source>Sheets to output</source>
        <translation>Auszugebende Blätter</translation>
    </message>
</context>
<context>
    <name>VaultBrowser</name>
    <message id="VaultBrowser.fileTypeLabel">
        <source>Files of type:</source>
        <translation>Dateityp:</translation>
    </message>
    <message id="VaultBrowser.nameColumn">
        <source>Name</source>
        <translation>Name</translation>
    </message>
</context>
</TS>
