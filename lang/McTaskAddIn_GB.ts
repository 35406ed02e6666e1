<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_GB" sourcelanguage="en_GB">
<context>
    <name>TS</name>
    <message id="TS.ACIS">
        <source>ACIS</source>
        <translation>ACIS</translation>
    </message>
    <message id="TS.Adobe Illustrator Files">
        <source>Adobe Illustrator Files</source>
        <translation>Adobe Illustrator Files</translation>
    </message>
    <message id="TS.Adobe Photoshop Files">
        <source>Adobe Photoshop Files</source>
        <translation>Adobe Photoshop Files</translation>
    </message>
    <message id="TS.Assembly">
        <source>Assembly</source>
        <translation>Assembly</translation>
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
        <translation>Drawing</translation>
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
        <translation>Inventor Assembly</translation>
    </message>
    <message id="TS.Inventor Part">
        <source>Inventor Part</source>
        <translation>Inventor Part</translation>
    </message>
    <message id="TS.Korinth Graphics">
        <source>Korinth Graphics</source>
        <translation>Korinth Graphics</translation>
    </message>
    <message id="TS.Lib Feat Part">
        <source>Lib Feat Part</source>
        <translation>Lib Feat Part</translation>
    </message>
    <message id="TS.Mecadra Files">
        <source>Mecadra Files</source>
        <translation>Mecadra Files</translation>
    </message>
    <message id="TS.Parasolid">
        <source>Parasolid</source>
        <translation>Parasolid</translation>
    </message>
    <message id="TS.Part">
        <source>Part</source>
        <translation>Part</translation>
    </message>
    <message id="TS.ProE Assembly">
        <source>ProE Assembly</source>
        <translation>ProE Assembly</translation>
    </message>
    <message id="TS.ProE Part">
        <source>ProE Part</source>
        <translation>ProE Part</translation>
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
        <translation>Solid Edge Assembly</translation>
    </message>
    <message id="TS.Solid Edge Part">
        <source>Solid Edge Part</source>
        <translation>Solid Edge Part</translation>
    </message>
    <message id="TS.Template">
        <source>Template</source>
        <translation>Template</translation>
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
        <translation>&lt;Use default&gt;</translation>
    </message>
    <message id="TS.2">
        <source>Script</source>
        <translation>Script</translation>
    </message>
    <message id="TS.5">
        <source>Select Files</source>
        <translation>Select Files</translation>
    </message>
    <message id="TS.6">
        <source>Select a folder:</source>
        <translation>Select a folder:</translation>
    </message>
    <message id="TS.7">
        <source>Please select at least one folder or file.</source>
        <translation>Please select at least one folder or file.</translation>
    </message>
    <message id="TS.12">
        <source>Failed to run Mecadra macro.</source>
        <translation>Failed to run Mecadra macro.</translation>
    </message>
    <message id="TS.13">
        <source>Printer</source>
        <translation>Printer</translation>
    </message>
    <message id="TS.14">
        <source>Paper Size and Orientation</source>
        <translation>Paper Size and Orientation</translation>
    </message>
    <message id="TS.15">
        <source>Margins</source>
        <translation>Margins</translation>
    </message>
    <message id="TS.16">
        <source>Files</source>
        <translation>Files</translation>
    </message>
    <message id="TS.17">
        <source>Paper Size</source>
        <translation>Paper Size</translation>
    </message>
    <message id="TS.18">
        <source>Printer Name</source>
        <translation>Printer Name</translation>
    </message>
    <message id="TS.19">
        <source>Conversion Settings</source>
        <translation>Conversion Settings</translation>
    </message>
    <message id="TS.20">
        <source>File Card</source>
        <translation>File Card</translation>
    </message>
    <message id="TS.21">
        <source>Output File Details</source>
        <translation>Output File Details</translation>
    </message>
    <message id="TS.22">
        <source>Advanced Scripting Options (%s)</source>
        <translation>Advanced Scripting Options (%s)</translation>
    </message>
    <message id="TS.23">
        <source>Source File Name</source>
        <translation>Source File Name</translation>
    </message>
    <message id="TS.24">
        <source>Source File Extension</source>
        <translation>Source File Extension</translation>
    </message>
    <message id="TS.25">
        <source>Configuration Name</source>
        <translation>Configuration Name</translation>
    </message>
    <message id="TS.26">
        <source>Source Folder Path</source>
        <translation>Source Folder Path</translation>
    </message>
    <message id="TS.27">
        <source>Vault Root Folder Path</source>
        <translation>Vault Root Folder Path</translation>
    </message>
    <message id="TS.28">
        <source>Millimeters</source>
        <translation>Millimeters</translation>
    </message>
    <message id="TS.29">
        <source>Centimeters</source>
        <translation>Centimeters</translation>
    </message>
    <message id="TS.30">
        <source>Meters</source>
        <translation>Meters</translation>
    </message>
    <message id="TS.31">
        <source>Inches</source>
        <translation>Inches</translation>
    </message>
    <message id="TS.32">
        <source>Feets</source>
        <translation>Feets</translation>
    </message>
    <message id="TS.33">
        <source>Trimmed Surface (type 144)</source>
        <translation>Trimmed Surface (type 144)</translation>
    </message>
    <message id="TS.34">
        <source>Manifold Solid B-rep Objectsurface (type 186)</source>
        <translation>Manifold Solid B-rep Objectsurface (type 186)</translation>
    </message>
    <message id="TS.35">
        <source>B-Splines (Entity type 126)</source>
        <translation>B-Splines (Entity type 126)</translation>
    </message>
    <message id="TS.36">
        <source>Parametric Splines (Entity type 112)</source>
        <translation>Parametric Splines (Entity type 112)</translation>
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
        <translation>Black &amp; white (bilevel)</translation>
    </message>
    <message id="TS.49">
        <source>RGB full color</source>
        <translation>RGB full color</translation>
    </message>
    <message id="TS.50">
        <source>Gray scale</source>
        <translation>Gray scale</translation>
    </message>
    <message id="TS.51">
        <source>Uncompressed</source>
        <translation>Uncompressed</translation>
    </message>
    <message id="TS.52">
        <source>Packbits</source>
        <translation>Packbits</translation>
    </message>
    <message id="TS.53">
        <source>Group 4 Fax</source>
        <translation>Group 4 Fax</translation>
    </message>
    <message id="TS.54">
        <source>Default</source>
        <translation>Default</translation>
    </message>
    <message id="TS.55">
        <source>Configurations</source>
        <translation>Configurations</translation>
    </message>
    <message id="TS.56">
        <source>Sheets</source>
        <translation>Sheets</translation>
    </message>
    <message id="TS.57">
        <source>&lt;Prompt the user&gt;</source>
        <translation>&lt;Prompt the user&gt;</translation>
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
        <translation>ZPK-File (*.zpk)</translation>
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
        <translation>Parasolid Binary (*.x_b)</translation>
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
        <translation>Destination Variable</translation>
    </message>
    <message id="TS.80">
        <source>Source</source>
        <translation>Source</translation>
    </message>
    <message id="TS.81">
        <source>Source File Path</source>
        <translation>Source File Path</translation>
    </message>
    <message id="TS.82">
        <source>Source Configuration</source>
        <translation>Source Configuration</translation>
    </message>
    <message id="TS.83">
        <source>Source Revision Number</source>
        <translation>Source Revision Number</translation>
    </message>
    <message id="TS.84">
        <source>Source Version Number</source>
        <translation>Source Version Number</translation>
    </message>
    <message id="TS.85">
        <source>Source Workflow State</source>
        <translation>Source Workflow State</translation>
    </message>
    <message id="TS.86">
        <source>Conversion Date and Time</source>
        <translation>Conversion Date and Time</translation>
    </message>
    <message id="TS.87">
        <source>Free Text</source>
        <translation>Free Text</translation>
    </message>
    <message id="TS.88">
        <source>Task Instance GUID</source>
        <translation>Task Instance GUID</translation>
    </message>
    <message id="TS.89">
        <source>File Conversion</source>
        <translation>File Conversion</translation>
    </message>
    <message id="TS.90">
        <source>Printing</source>
        <translation>Printing</translation>
    </message>
    <message id="TS.91">
        <source>General</source>
        <translation>General</translation>
    </message>
    <message id="TS.92">
        <source>Print</source>
        <translation>Print</translation>
    </message>
    <message id="TS.95">
        <source>Reason:</source>
        <translation>Reason:</translation>
    </message>
    <message id="TS.96">
        <source>Invalid argument provided in macro.</source>
        <translation>Invalid argument provided in macro.</translation>
    </message>
    <message id="TS.97">
        <source>Macros are disabled.</source>
        <translation>Macros are disabled.</translation>
    </message>
    <message id="TS.98">
        <source>Out of memory.</source>
        <translation>Out of memory.</translation>
    </message>
    <message id="TS.99">
        <source>Invalid procedure name.</source>
        <translation>Invalid procedure name.</translation>
    </message>
    <message id="TS.100">
        <source>Invalid property type.</source>
        <translation>Invalid property type.</translation>
    </message>
    <message id="TS.101">
        <source>Sub or Function expected.</source>
        <translation>Sub or Function expected.</translation>
    </message>
    <message id="TS.102">
        <source>Invalid parameter count.</source>
        <translation>Invalid parameter count.</translation>
    </message>
    <message id="TS.103">
        <source>Invalid variable type.</source>
        <translation>Invalid variable type.</translation>
    </message>
    <message id="TS.104">
        <source>Unhandled exception.</source>
        <translation>Unhandled exception.</translation>
    </message>
    <message id="TS.105">
        <source>Value overflow.</source>
        <translation>Value overflow.</translation>
    </message>
    <message id="TS.106">
        <source>Type mismatch.</source>
        <translation>Type mismatch.</translation>
    </message>
    <message id="TS.107">
        <source>Required parameter missing.</source>
        <translation>Required parameter missing.</translation>
    </message>
    <message id="TS.108">
        <source>Call failed.</source>
        <translation>Call failed.</translation>
    </message>
    <message id="TS.109">
        <source>Invalid index provided.</source>
        <translation>Invalid index provided.</translation>
    </message>
    <message id="TS.110">
        <source>Permission denied.</source>
        <translation>Permission denied.</translation>
    </message>
    <message id="TS.111">
        <source>Too many open files.</source>
        <translation>Too many open files.</translation>
    </message>
    <message id="TS.112">
        <source>File save failed.</source>
        <translation>File save failed.</translation>
    </message>
    <message id="TS.113">
        <source>Converted Files</source>
        <translation>Converted Files</translation>
    </message>
    <message id="TS.114">
        <source>Printed Files</source>
        <translation>Printed Files</translation>
    </message>
    <message id="TS.115">
        <source>Selected Files</source>
        <translation>Selected Files</translation>
    </message>
    <message id="TS.116">
        <source>Source File</source>
        <translation>Source File</translation>
    </message>
    <message id="TS.117">
        <source>File Name</source>
        <translation>File Name</translation>
    </message>
    <message id="TS.118">
        <source>Configuration</source>
        <translation>Configuration</translation>
    </message>
    <message id="TS.119">
        <source>Printer</source>
        <translation>Printer</translation>
    </message>
    <message id="TS.120">
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message id="TS.121">
        <source>Found in</source>
        <translation>Found in</translation>
    </message>
    <message id="TS.122">
        <source>Output File</source>
        <translation>Output File</translation>
    </message>
    <message id="TS.123">
        <source>Example</source>
        <translation>Example</translation>
    </message>
    <message id="TS.124">
        <source>You must restart the task property dialog box in order to see the new user interface.</source>
        <translation>You must restart the task property dialog box in order to see the new user interface.</translation>
    </message>
    <message id="TS.125">
        <source>Enter number of copies to print.</source>
        <translation>Enter number of copies to print.</translation>
    </message>
    <message id="TS.126">
        <source>Total: %1</source>
        <translation>Total: %1</translation>
    </message>
    <message id="TS.127">
        <source>Are you sure you want to discard any changes you have made to the script?</source>
        <translation>Are you sure you want to discard any changes you have made to the script?</translation>
    </message>
    <message id="TS.128">
        <source>Reset</source>
        <translation>Reset</translation>
    </message>
    <message id="TS.129">
        <source>Menu Command</source>
        <translation>Menu Command</translation>
    </message>
    <message id="TS.130">
        <source>Source File Revision</source>
        <translation>Source File Revision</translation>
    </message>
    <message id="TS.131">
        <source>Source File Version</source>
        <translation>Source File Version</translation>
    </message>
    <message id="TS.132">
        <source>Source File Workflow State</source>
        <translation>Source File Workflow State</translation>
    </message>
    <message id="TS.133">
        <source>Todays Date</source>
        <translation>Todays Date</translation>
    </message>
    <message id="TS.134">
        <source>Please enter menu command.</source>
        <translation>Please enter menu command.</translation>
    </message>
    <message id="TS.135">
        <source>Logs</source>
        <translation>Logs</translation>
    </message>
    <message id="TS.136">
        <source>Convert Files</source>
        <translation>Convert Files</translation>
    </message>
    <message id="TS.137">
        <source>Print Files</source>
        <translation>Print Files</translation>
    </message>
    <message id="TS.138">
        <source>Execute Script</source>
        <translation>Execute Script</translation>
    </message>
    <message id="TS.139">
        <source>Converts Mecadra files from one format to another</source>
        <translation>Converts Mecadra files from one format to another</translation>
    </message>
    <message id="TS.140">
        <source>Prints selected documents with Mecadra</source>
        <translation>Prints selected documents with Mecadra</translation>
    </message>
    <message id="TS.141">
        <source>Executes script on selected documents</source>
        <translation>Executes script on selected documents</translation>
    </message>
    <message id="TS.142">
        <source>STEP (*.step)</source>
        <translation>STEP (*.step)</translation>
    </message>
    <message id="TS.143">
        <source>No file selected.</source>
        <translation>No file selected.</translation>
    </message>
    <message id="TS.144">
        <source>No file converted.</source>
        <translation>No file converted.</translation>
    </message>
    <message id="TS.160">
        <source>Source File Path</source>
        <translation>Source File Path</translation>
    </message>
    <message id="TS.161">
        <source>Select Files and Folders for %s</source>
        <translation>Select Files and Folders for %s</translation>
    </message>
    <message id="TS.164">
        <source>Adding files to vault...</source>
        <translation>Adding files to vault...</translation>
    </message>
    <message id="TS.165">
        <source>Task finished with errors. Please see the log-file for more details.</source>
        <translation>Task finished with errors. Please see the log-file for more details.</translation>
    </message>
    <message id="TS.166">
        <source>Please select at least one file.</source>
        <translation>Please select at least one file.</translation>
    </message>
    <message id="TS.168">
        <source>No printer selected.</source>
        <translation>No printer selected.</translation>
    </message>
    <message id="TS.170">
        <source>All sheets</source>
        <translation>All sheets</translation>
    </message>
    <message id="TS.171">
        <source>All configurations</source>
        <translation>All configurations</translation>
    </message>
    <message id="TS.9001">
        <source>Mecadra %1 is not installed.</source>
        <translation>Mecadra %1 is not installed.</translation>
    </message>
    <message id="TS.9002">
        <source>Failed to start Mecadra %1.</source>
        <translation>Failed to start Mecadra %1.</translation>
    </message>
    <message id="TS.9003">
        <source>Failed to get Mecadra revision number.</source>
        <translation>Failed to get Mecadra revision number.</translation>
    </message>
    <message id="TS.9004">
        <source>Failed to attach event handlers to Mecadra.</source>
        <translation>Failed to attach event handlers to Mecadra.</translation>
    </message>
    <message id="TS.9005">
        <source>Failed to set Mecadra main window as invisible.</source>
        <translation>Failed to set Mecadra main window as invisible.</translation>
    </message>
    <message id="TS.9006">
        <source>Failed to close Mecadra application.</source>
        <translation>Failed to close Mecadra application.</translation>
    </message>
    <message id="TS.9007">
        <source>The macro did not finish within %1 seconds.</source>
        <translation>The macro did not finish within %1 seconds.</translation>
    </message>
    <message id="TS.9008">
        <source>File open failed.</source>
        <translation>File open failed.</translation>
    </message>
</context>
<context>
    <name>AdvancedConvOpDlg</name>
    <message id="AdvancedConvOpDlg.helpButton">
        <source>Help</source>
        <translation>Help</translation>
    </message>
    <message id="AdvancedConvOpDlg.resetAllButton">
        <source>&amp;Reset All</source>
        <translation>&amp;Reset All</translation>
    </message>
</context>
<context>
    <name>ConfsTemplateDlg</name>
    <message id="ConfsTemplateDlg.allInOneRadio">
        <source>Include all configurations in the same output file</source>
        <translation>Include all configurations in the same output file</translation>
    </message>
    <message id="ConfsTemplateDlg.allRadio">
        <source>All configurations</source>
        <translation>All configurations</translation>
    </message>
    <message id="ConfsTemplateDlg.allowFileCheck">
        <source>Allow the user to change this setting</source>
        <translation>Allow the user to change this setting</translation>
    </message>
    <message id="ConfsTemplateDlg.allowOutputCheck">
        <source>Allow the user to change this setting</source>
        <translation>Allow the user to change this setting</translation>
    </message>
    <message id="ConfsTemplateDlg.fileGroup">
        <source>Multi-configuration output</source>
        <translation>Multi-configuration output</translation>
    </message>
    <message id="ConfsTemplateDlg.lastActiveRadio">
        <source>Last active configuration</source>
        <translation>Last active configuration</translation>
    </message>
    <message id="ConfsTemplateDlg.namedRadio">
        <source>Named configuration (use * as wildcard):</source>
        <translation>Named configuration (use * as wildcard):</translation>
    </message>
    <message id="ConfsTemplateDlg.onePerItemRadio">
        <source>Create one output file per configuration</source>
        <translation>Create one output file per configuration</translation>
    </message>
    <message id="ConfsTemplateDlg.outputGroup">
        <source>Configurations to output</source>
        <translation>Configurations to output</translation>
    </message>
</context>
<context>
    <name>ConvOpACISDlg</name>
    <message id="ConvOpACISDlg.AcisGeometry_0">
        <source>Solid/Surface geometry</source>
        <translation>Solid/Surface geometry</translation>
    </message>
    <message id="ConvOpACISDlg.AcisGeometry_1">
        <source>3D curves</source>
        <translation>3D curves</translation>
    </message>
    <message id="ConvOpACISDlg.AcisGeometry_sketches">
        <source>Export sketch entities</source>
        <translation>Export sketch entities</translation>
    </message>
    <message id="ConvOpACISDlg.AcisOutputAsUnit_label">
        <source>Output as:</source>
        <translation>Output as:</translation>
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
        <translation>Allow export to STL for parts &amp;&amp; assemblies</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpAllowExportOfSTL_note">
        <source>Readers of the file may save its parts and assemblies again as STL.</source>
        <translation>Readers of the file may save its parts and assemblies again as STL.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpOkayToMeasure">
        <source>Okay to measure this Glimpse file</source>
        <translation>Okay to measure this Glimpse file</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpOkayToMeasure_note">
        <source>Readers of the file may measure distances and angles in its geometry.</source>
        <translation>Readers of the file may measure distances and angles in its geometry.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpRecalcMotionStudies">
        <source>Recalculate the motion study if the results are out of date.</source>
        <translation>Recalculate the motion study if the results are out of date.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpRecalcMotionStudies_note">
        <source>Otherwise results that are out of date are saved as they are.</source>
        <translation>Otherwise results that are out of date are saved as they are.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveBOM">
        <source>Save Bill of Materials features to Glimpse file</source>
        <translation>Save Bill of Materials features to Glimpse file</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveBOM_note">
        <source>The bills of materials of the document can be read in the file.</source>
        <translation>The bills of materials of the document can be read in the file.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudies">
        <source>Save Motion Studies to Glimpse file</source>
        <translation>Save Motion Studies to Glimpse file</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudiesToAllConfs_0">
        <source>Save each motion study in every configuration.</source>
        <translation>Save each motion study in every configuration.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudiesToAllConfs_1">
        <source>Save only in last calculated configuration.</source>
        <translation>Save only in last calculated configuration.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveMotionStudies_note">
        <source>The motion studies of an assembly can be played in the file.</source>
        <translation>The motion studies of an assembly can be played in the file.</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveShadedData">
        <source>Save shaded data in drawings</source>
        <translation>Save shaded data in drawings</translation>
    </message>
    <message id="ConvOpGlimpseDlg.GlmpSaveShadedData_note">
        <source>Shaded views of drawings stay shaded in the file; the file grows.</source>
        <translation>Shaded views of drawings stay shaded in the file; the file grows.</translation>
    </message>
</context>
<context>
    <name>ConvOpIGESDlg</name>
    <message id="ConvOpIGESDlg.IgesComponentsIntoOneFile">
        <source>Save all components of an assembly in one file</source>
        <translation>Save all components of an assembly in one file</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportFreeCurves">
        <source>Export 3D curve features</source>
        <translation>Export 3D curve features</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportSketchEntities">
        <source>Export sketch entities</source>
        <translation>Export sketch entities</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportSolidSurface">
        <source>IGES solid/surface entities:</source>
        <translation>IGES solid/surface entities:</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesExportWireframe">
        <source>IGES wireframe (3D curves):</source>
        <translation>IGES wireframe (3D curves):</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesFlattenAssemblyHierarchy">
        <source>Flatten assembly hierarchy</source>
        <translation>Flatten assembly hierarchy</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesHighCurveAccuracy">
        <source>Use high trim curve accuracy</source>
        <translation>Use high trim curve accuracy</translation>
    </message>
    <message id="ConvOpIGESDlg.IgesSystem_label">
        <source>Output as:</source>
        <translation>Output as:</translation>
    </message>
</context>
<context>
    <name>ConvOpPDFDlg</name>
    <message id="ConvOpPDFDlg.PdfEmbedFonts">
        <source>E&amp;mbed fonts</source>
        <translation>E&amp;mbed fonts</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfHighQuality">
        <source>&amp;High quality</source>
        <translation>&amp;High quality</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfInColor">
        <source>&amp;Export PDF in color</source>
        <translation>&amp;Export PDF in color</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfPrintHeaderFooter">
        <source>&amp;Print header/footer</source>
        <translation>&amp;Print header/footer</translation>
    </message>
    <message id="ConvOpPDFDlg.PdfUsePrinterLineWeights">
        <source>Use specified printer line &amp;weights</source>
        <translation>Use specified printer line &amp;weights</translation>
    </message>
</context>
<context>
    <name>ConvOpParasolidDlg</name>
    <message id="ConvOpParasolidDlg.ParasolidFlattenHierarchy">
        <source>Flatten assembly hierarchy</source>
        <translation>Flatten assembly hierarchy</translation>
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
        <translation>Solid/Surface geometry</translation>
    </message>
    <message id="ConvOpSTEPDlg.StepGeometry_1">
        <source>3D curves</source>
        <translation>3D curves</translation>
    </message>
    <message id="ConvOpSTEPDlg.StepGeometry_sketches">
        <source>Export sketch entities</source>
        <translation>Export sketch entities</translation>
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
        <translation>Check for interferences</translation>
    </message>
    <message id="ConvOpSTLDlg.StlComponentsIntoOneFile">
        <source>Save all components of an assembly in a single file</source>
        <translation>Save all components of an assembly in a single file</translation>
    </message>
    <message id="ConvOpSTLDlg.StlDontTranslatePositive">
        <source>Do not translate STL output data to positive space</source>
        <translation>Do not translate STL output data to positive space</translation>
    </message>
    <message id="ConvOpSTLDlg.StlOutputAsUnit_label">
        <source>Unit:</source>
        <translation>Unit:</translation>
    </message>
    <message id="ConvOpSTLDlg.StlOutputAs_0">
        <source>Binary</source>
        <translation>Binary</translation>
    </message>
    <message id="ConvOpSTLDlg.StlOutputAs_1">
        <source>ASCII</source>
        <translation>ASCII</translation>
    </message>
    <message id="ConvOpSTLDlg.StlQuality_0">
        <source>Coarse</source>
        <translation>Coarse</translation>
    </message>
    <message id="ConvOpSTLDlg.StlQuality_1">
        <source>Fine</source>
        <translation>Fine</translation>
    </message>
</context>
<context>
    <name>ConvOpTifPsdDlg</name>
    <message id="ConvOpTifPsdDlg.TifCompressionScheme_label">
        <source>Compression scheme:</source>
        <translation>Compression scheme:</translation>
    </message>
    <message id="ConvOpTifPsdDlg.TifImageType_label">
        <source>Image type:</source>
        <translation>Image type:</translation>
    </message>
</context>
<context>
    <name>ConvOpVRMLDlg</name>
    <message id="ConvOpVRMLDlg.VrmlOutputAsUnit_label">
        <source>Output as:</source>
        <translation>Output as:</translation>
    </message>
    <message id="ConvOpVRMLDlg.VrmlSaveAssemblyAsOneFile">
        <source>Save all components of the assembly in a single file</source>
        <translation>Save all components of the assembly in a single file</translation>
    </message>
</context>
<context>
    <name>ConversionSettingsPageDlg</name>
    <message id="ConversionSettingsPageDlg.allowReferencesCheck">
        <source>Allow the user to change this setting</source>
        <translation>Allow the user to change this setting</translation>
    </message>
    <message id="ConversionSettingsPageDlg.conversionOptionsButton">
        <source>Conversion Options...</source>
        <translation>Conversion Options...</translation>
    </message>
    <message id="ConversionSettingsPageDlg.exampleLabel">
        <source>Example:</source>
        <translation>Example:</translation>
    </message>
    <message id="ConversionSettingsPageDlg.formatLabel">
        <source>Output file format:</source>
        <translation>Output file format:</translation>
    </message>
    <message id="ConversionSettingsPageDlg.latestRadio">
        <source>Use the latest version of the referenced files</source>
        <translation>Use the latest version of the referenced files</translation>
    </message>
    <message id="ConversionSettingsPageDlg.pathLabel">
        <source>Output file path:</source>
        <translation>Output file path:</translation>
    </message>
    <message id="ConversionSettingsPageDlg.referencedRadio">
        <source>Use the referenced version of the referenced files ("as built")</source>
        <translation>Use the referenced version of the referenced files ("as built")</translation>
    </message>
    <message id="ConversionSettingsPageDlg.referencesGroup">
        <source>Source file references</source>
        <translation>Source file references</translation>
    </message>
</context>
<context>
    <name>FileCardPageDlg</name>
    <message id="FileCardPageDlg.addButton">
        <source>Add Variable</source>
        <translation>Add Variable</translation>
    </message>
    <message id="FileCardPageDlg.destinationLabel">
        <source>Destination variable:</source>
        <translation>Destination variable:</translation>
    </message>
    <message id="FileCardPageDlg.freeTextLabel">
        <source>Free text:</source>
        <translation>Free text:</translation>
    </message>
    <message id="FileCardPageDlg.listLabel">
        <source>Variables to update in the output file's card:</source>
        <translation>Variables to update in the output file's card:</translation>
    </message>
    <message id="FileCardPageDlg.removeButton">
        <source>Remove Variable</source>
        <translation>Remove Variable</translation>
    </message>
    <message id="FileCardPageDlg.selectedGroup">
        <source>Selected variable</source>
        <translation>Selected variable</translation>
    </message>
    <message id="FileCardPageDlg.sourceLabel">
        <source>Source:</source>
        <translation>Source:</translation>
    </message>
</context>
<context>
    <name>FileRefTree</name>
    <message id="FileRefTree.Unsupported File Format">
        <source>Unsupported File Format</source>
        <translation>Unsupported File Format</translation>
    </message>
    <message id="FileRefTree.configurationColumn">
        <source>Configuration</source>
        <translation>Configuration</translation>
    </message>
    <message id="FileRefTree.foundInColumn">
        <source>Found in</source>
        <translation>Found in</translation>
    </message>
    <message id="FileRefTree.nameColumn">
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message id="FileRefTree.stateColumn">
        <source>State</source>
        <translation>State</translation>
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
        <translation>Advanced Scripting Options...</translation>
    </message>
    <message id="FilesDlg.autoAllRadio">
        <source>All parts, sub-assemblies, and drawings</source>
        <translation>All parts, sub-assemblies, and drawings</translation>
    </message>
    <message id="FilesDlg.autoDrawingsRadio">
        <source>All drawings</source>
        <translation>All drawings</translation>
    </message>
    <message id="FilesDlg.autoModelsRadio">
        <source>Parts and sub-assemblies only</source>
        <translation>Parts and sub-assemblies only</translation>
    </message>
    <message id="FilesDlg.autoNoneRadio">
        <source>None</source>
        <translation>None</translation>
    </message>
    <message id="FilesDlg.autoSelectGroup">
        <source>Auto-select references to print</source>
        <translation>Auto-select references to print</translation>
    </message>
    <message id="FilesDlg.browseButton">
        <source>Browse...</source>
        <translation>Browse...</translation>
    </message>
    <message id="FilesDlg.errorLogLabel">
        <source>Error log folder:</source>
        <translation>Error log folder:</translation>
    </message>
    <message id="FilesDlg.errorLogNote">
        <source>(Error log files will be named with a unique identifier.)</source>
        <translation>(Error log files will be named with a unique identifier.)</translation>
    </message>
    <message id="FilesDlg.latestVersionRadio">
        <source>Use the latest version of referenced files</source>
        <translation>Use the latest version of referenced files</translation>
    </message>
    <message id="FilesDlg.promptVersionRadio">
        <source>Prompt the user</source>
        <translation>Prompt the user</translation>
    </message>
    <message id="FilesDlg.referencedVersionRadio">
        <source>Use the referenced version of referenced files ("as built")</source>
        <translation>Use the referenced version of referenced files ("as built")</translation>
    </message>
    <message id="FilesDlg.showPrintDialogCheck">
        <source>Show print dialog box</source>
        <translation>Show print dialog box</translation>
    </message>
    <message id="FilesDlg.versionGroup">
        <source>Version of referenced files</source>
        <translation>Version of referenced files</translation>
    </message>
</context>
<context>
    <name>MarginsDlg</name>
    <message id="MarginsDlg.bottomLabel">
        <source>Bottom:</source>
        <translation>Bottom:</translation>
    </message>
    <message id="MarginsDlg.bottomUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="MarginsDlg.fixedFooterRadio">
        <source>Always use the following footer:</source>
        <translation>Always use the following footer:</translation>
    </message>
    <message id="MarginsDlg.fixedHeaderRadio">
        <source>Always use the following header:</source>
        <translation>Always use the following header:</translation>
    </message>
    <message id="MarginsDlg.fixedMarginsRadio">
        <source>Always use the following size:</source>
        <translation>Always use the following size:</translation>
    </message>
    <message id="MarginsDlg.footerCenterLabel">
        <source>Center section:</source>
        <translation>Center section:</translation>
    </message>
    <message id="MarginsDlg.footerGroup">
        <source>Custom footer</source>
        <translation>Custom footer</translation>
    </message>
    <message id="MarginsDlg.footerLeftLabel">
        <source>Left section:</source>
        <translation>Left section:</translation>
    </message>
    <message id="MarginsDlg.footerRightLabel">
        <source>Right section:</source>
        <translation>Right section:</translation>
    </message>
    <message id="MarginsDlg.headerCenterLabel">
        <source>Center section:</source>
        <translation>Center section:</translation>
    </message>
    <message id="MarginsDlg.headerGroup">
        <source>Custom header</source>
        <translation>Custom header</translation>
    </message>
    <message id="MarginsDlg.headerLeftLabel">
        <source>Left section:</source>
        <translation>Left section:</translation>
    </message>
    <message id="MarginsDlg.headerRightLabel">
        <source>Right section:</source>
        <translation>Right section:</translation>
    </message>
    <message id="MarginsDlg.leftLabel">
        <source>Left:</source>
        <translation>Left:</translation>
    </message>
    <message id="MarginsDlg.leftUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="MarginsDlg.marginsGroup">
        <source>Paper margins</source>
        <translation>Paper margins</translation>
    </message>
    <message id="MarginsDlg.noFooterRadio">
        <source>None</source>
        <translation>None</translation>
    </message>
    <message id="MarginsDlg.noHeaderRadio">
        <source>None</source>
        <translation>None</translation>
    </message>
    <message id="MarginsDlg.printerMarginsRadio">
        <source>Use printer's margins</source>
        <translation>Use printer's margins</translation>
    </message>
    <message id="MarginsDlg.promptFooterRadio">
        <source>Prompt the user</source>
        <translation>Prompt the user</translation>
    </message>
    <message id="MarginsDlg.promptHeaderRadio">
        <source>Prompt the user</source>
        <translation>Prompt the user</translation>
    </message>
    <message id="MarginsDlg.promptMarginsRadio">
        <source>Prompt the user</source>
        <translation>Prompt the user</translation>
    </message>
    <message id="MarginsDlg.rightLabel">
        <source>Right:</source>
        <translation>Right:</translation>
    </message>
    <message id="MarginsDlg.rightUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="MarginsDlg.topLabel">
        <source>Top:</source>
        <translation>Top:</translation>
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
        <translation>Display a menu command in the explorer for this task</translation>
    </message>
    <message id="MenuCommandDlg.helpTextLabel">
        <source>Status bar help text:</source>
        <translation>Status bar help text:</translation>
    </message>
    <message id="MenuCommandDlg.menuTextLabel">
        <source>Menu command:</source>
        <translation>Menu command:</translation>
    </message>
</context>
<context>
    <name>OutputFileDetailsPageDlg</name>
    <message id="OutputFileDetailsPageDlg.advancedScriptingButton">
        <source>Advanced Scripting Options...</source>
        <translation>Advanced Scripting Options...</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.browseButton">
        <source>Browse...</source>
        <translation>Browse...</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.defaultPathLabel">
        <source>Default path:</source>
        <translation>Default path:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.duplicateGroup">
        <source>Duplicate File Name Handling</source>
        <translation>Duplicate File Name Handling</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.errorLogHintLabel">
        <source>(Error log files will be named with a unique identifier)</source>
        <translation>(Error log files will be named with a unique identifier)</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.errorLogLabel">
        <source>Error logs folder:</source>
        <translation>Error logs folder:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.newVersionRadio">
        <source>Create new version of existing files</source>
        <translation>Create new version of existing files</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.primaryExampleLabel">
        <source>Example:</source>
        <translation>Example:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.primaryGroup">
        <source>Primary output path</source>
        <translation>Primary output path</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.promptOutputCheck">
        <source>Allow the user to change the output path</source>
        <translation>Allow the user to change the output path</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.refToSourceCheck">
        <source>Create a reference from the destination file to the source file</source>
        <translation>Create a reference from the destination file to the source file</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.replaceRadio">
        <source>Replace exisiting files</source>
        <translation>Replace exisiting files</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.secondaryExampleLabel">
        <source>Example:</source>
        <translation>Example:</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.secondaryGroup">
        <source>Secondary output path</source>
        <translation>Secondary output path</translation>
    </message>
    <message id="OutputFileDetailsPageDlg.secondaryHintLabel">
        <source>(Leave this field empty if you only want one copy of the file.)</source>
        <translation>(Leave this field empty if you only want one copy of the file.)</translation>
    </message>
</context>
<context>
    <name>PaperSizeDlg</name>
    <message id="PaperSizeDlg.allowOrientationCheck">
        <source>Allow the user to change the orientation</source>
        <translation>Allow the user to change the orientation</translation>
    </message>
    <message id="PaperSizeDlg.allowSizeCheck">
        <source>Allow the user to change the size</source>
        <translation>Allow the user to change the size</translation>
    </message>
    <message id="PaperSizeDlg.defaultSizeLabel">
        <source>Default size:</source>
        <translation>Default size:</translation>
    </message>
    <message id="PaperSizeDlg.landscapeRadio">
        <source>Landscape</source>
        <translation>Landscape</translation>
    </message>
    <message id="PaperSizeDlg.orientationGroup">
        <source>Default orientation</source>
        <translation>Default orientation</translation>
    </message>
    <message id="PaperSizeDlg.paperGroup">
        <source>Paper size</source>
        <translation>Paper size</translation>
    </message>
    <message id="PaperSizeDlg.portraitRadio">
        <source>Portrait</source>
        <translation>Portrait</translation>
    </message>
    <message id="PaperSizeDlg.useDrawingInfoCheck">
        <source>Use paper size and orientation stored in drawing if available</source>
        <translation>Use paper size and orientation stored in drawing if available</translation>
    </message>
</context>
<context>
    <name>PrintUIDlg</name>
    <message id="PrintUIDlg.bottomLabel">
        <source>Bottom:</source>
        <translation>Bottom:</translation>
    </message>
    <message id="PrintUIDlg.bottomUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.cancelButton">
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message id="PrintUIDlg.caption">
        <source>Print</source>
        <translation>Print</translation>
    </message>
    <message id="PrintUIDlg.copiesLabel">
        <source>Number of copies:</source>
        <translation>Number of copies:</translation>
    </message>
    <message id="PrintUIDlg.customMarginsRadio">
        <source>Use custom margins:</source>
        <translation>Use custom margins:</translation>
    </message>
    <message id="PrintUIDlg.footerCenterLabel">
        <source>Center section:</source>
        <translation>Center section:</translation>
    </message>
    <message id="PrintUIDlg.footerGroup">
        <source>Custom footer</source>
        <translation>Custom footer</translation>
    </message>
    <message id="PrintUIDlg.footerLeftLabel">
        <source>Left section:</source>
        <translation>Left section:</translation>
    </message>
    <message id="PrintUIDlg.footerRightLabel">
        <source>Right section:</source>
        <translation>Right section:</translation>
    </message>
    <message id="PrintUIDlg.headerCenterLabel">
        <source>Center section:</source>
        <translation>Center section:</translation>
    </message>
    <message id="PrintUIDlg.headerGroup">
        <source>Custom header</source>
        <translation>Custom header</translation>
    </message>
    <message id="PrintUIDlg.headerLeftLabel">
        <source>Left section:</source>
        <translation>Left section:</translation>
    </message>
    <message id="PrintUIDlg.headerRightLabel">
        <source>Right section:</source>
        <translation>Right section:</translation>
    </message>
    <message id="PrintUIDlg.helpButton">
        <source>Help</source>
        <translation>Help</translation>
    </message>
    <message id="PrintUIDlg.landscapeRadio">
        <source>&amp;Landscape</source>
        <translation>&amp;Landscape</translation>
    </message>
    <message id="PrintUIDlg.leftLabel">
        <source>Left:</source>
        <translation>Left:</translation>
    </message>
    <message id="PrintUIDlg.leftUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.marginsGroup">
        <source>Paper margins</source>
        <translation>Paper margins</translation>
    </message>
    <message id="PrintUIDlg.orientationGroup">
        <source>Orientation</source>
        <translation>Orientation</translation>
    </message>
    <message id="PrintUIDlg.paperLabel">
        <source>Paper &amp;size:</source>
        <translation>Paper &amp;size:</translation>
    </message>
    <message id="PrintUIDlg.portraitRadio">
        <source>P&amp;ortrait</source>
        <translation>P&amp;ortrait</translation>
    </message>
    <message id="PrintUIDlg.printButton">
        <source>Print</source>
        <translation>Print</translation>
    </message>
    <message id="PrintUIDlg.printerLabel">
        <source>&amp;Printer:</source>
        <translation>&amp;Printer:</translation>
    </message>
    <message id="PrintUIDlg.printerMarginsRadio">
        <source>Use printer's margins</source>
        <translation>Use printer's margins</translation>
    </message>
    <message id="PrintUIDlg.rightLabel">
        <source>Right:</source>
        <translation>Right:</translation>
    </message>
    <message id="PrintUIDlg.rightUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.topLabel">
        <source>Top:</source>
        <translation>Top:</translation>
    </message>
    <message id="PrintUIDlg.topUnit">
        <source>mm</source>
        <translation>mm</translation>
    </message>
    <message id="PrintUIDlg.totalLabel">
        <source>Total: 0</source>
        <translation>Total: 0</translation>
    </message>
    <message id="PrintUIDlg.useFooterCheck">
        <source>Use custom &amp;footer:</source>
        <translation>Use custom &amp;footer:</translation>
    </message>
    <message id="PrintUIDlg.useHeaderCheck">
        <source>&amp;Use custom header:</source>
        <translation>&amp;Use custom header:</translation>
    </message>
    <message id="PrintUIDlg.versionLabel">
        <source>&amp;Version of references:</source>
        <translation>&amp;Version of references:</translation>
    </message>
</context>
<context>
    <name>PrinterDlg</name>
    <message id="PrinterDlg.alwaysRadio">
        <source>Always use the following printer name:</source>
        <translation>Always use the following printer name:</translation>
    </message>
    <message id="PrinterDlg.bySizeRadio">
        <source>Select printer based on paper size:</source>
        <translation>Select printer based on paper size:</translation>
    </message>
    <message id="PrinterDlg.promptRadio">
        <source>Prompt the user with the following options:</source>
        <translation>Prompt the user with the following options:</translation>
    </message>
</context>
<context>
    <name>RefDlg</name>
    <message id="RefDlg.123">
        <source>Referenced version</source>
        <translation>Referenced version</translation>
    </message>
    <message id="RefDlg.124">
        <source>Latest version</source>
        <translation>Latest version</translation>
    </message>
</context>
<context>
    <name>ScriptPageDlg</name>
    <message id="ScriptPageDlg.caption">
        <source>Advanced Scripting Options</source>
        <translation>Advanced Scripting Options</translation>
    </message>
    <message id="ScriptPageDlg.insertMacroButton">
        <source>Insert Macro &gt;</source>
        <translation>Insert Macro &gt;</translation>
    </message>
    <message id="ScriptPageDlg.kindLabel">
        <source>Task user interface type:</source>
        <translation>Task user interface type:</translation>
    </message>
    <message id="ScriptPageDlg.resetButton">
        <source>Reset...</source>
        <translation>Reset...</translation>
    </message>
    <message id="ScriptPageDlg.scriptLabel">
        <source>Script to execute in Mecadra:</source>
        <translation>Script to execute in Mecadra:</translation>
    </message>
    <message id="ScriptPageDlg.versionLabel">
        <source>Mecadra version to use:</source>
        <translation>Mecadra version to use:</translation>
    </message>
</context>
<context>
    <name>SelectionDlg</name>
    <message id="SelectionDlg.addFiles213">
        <source>Add Files...</source>
        <translation>Add Files...</translation>
    </message>
    <message id="SelectionDlg.addFolder214">
        <source>Add Folder...</source>
        <translation>Add Folder...</translation>
    </message>
    <message id="SelectionDlg.caption">
        <source>Select Files and Folders for Task</source>
        <translation>Select Files and Folders for Task</translation>
    </message>
    <message id="SelectionDlg.label210">
        <source>Selected files and folders:</source>
        <translation>Selected files and folders:</translation>
    </message>
    <message id="SelectionDlg.remove215">
        <source>Remove</source>
        <translation>Remove</translation>
    </message>
</context>
<context>
    <name>SetupDialog</name>
    <message id="SetupDialog.caption">
        <source>Task Properties</source>
        <translation>Task Properties</translation>
    </message>
</context>
<context>
    <name>SheetsTemplateDlg</name>
    <message id="SheetsTemplateDlg.allInOneRadio">
        <source>Include all sheets in the same output file</source>
        <translation>Include all sheets in the same output file</translation>
    </message>
    <message id="SheetsTemplateDlg.allRadio">
        <source>All sheets</source>
        <translation>All sheets</translation>
    </message>
    <message id="SheetsTemplateDlg.allowFileCheck">
        <source>Allow the user to change this setting</source>
        <translation>Allow the user to change this setting</translation>
    </message>
    <message id="SheetsTemplateDlg.allowOutputCheck">
        <source>Allow the user to change this setting</source>
        <translation>Allow the user to change this setting</translation>
    </message>
    <message id="SheetsTemplateDlg.fileGroup">
        <source>Multi-sheet output</source>
        <translation>Multi-sheet output</translation>
    </message>
    <message id="SheetsTemplateDlg.lastActiveRadio">
        <source>Last active sheet</source>
        <translation>Last active sheet</translation>
    </message>
    <message id="SheetsTemplateDlg.namedRadio">
        <source>Named sheet (use * as wildcard):</source>
        <translation>Named sheet (use * as wildcard):</translation>
    </message>
    <message id="SheetsTemplateDlg.onePerItemRadio">
        <source>Create one output file per sheet</source>
        <translation>Create one output file per sheet</translation>
    </message>
    <message id="SheetsTemplateDlg.outputGroup">
        <source>Sheets to output</source>
        <translation>Sheets to output</translation>
    </message>
</context>
<context>
    <name>VaultBrowser</name>
    <message id="VaultBrowser.fileTypeLabel">
        <source>Files of type:</source>
        <translation>Files of type:</translation>
    </message>
    <message id="VaultBrowser.nameColumn">
        <source>Name</source>
        <translation>Name</translation>
    </message>
</context>
</TS>
