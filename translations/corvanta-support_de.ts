<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>BasicTextProcessor</name>
    <message>
        <source>1 byte</source>
        <translation>1 Byte</translation>
    </message>
    <message>
        <source>bytes</source>
        <translation>Byte</translation>
    </message>
    <message>
        <source>KB</source>
        <translation>KB</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>MB</translation>
    </message>
    <message>
        <source>GB</source>
        <translation>GB</translation>
    </message>
    <message>
        <source>TB</source>
        <translation>TB</translation>
    </message>
</context>
<context>
    <name>FileDirTools</name>
    <message>
        <source>Failed to open &quot;%1&quot; as read only because it does not exist.</source>
        <translation>&quot;%1&quot; konnte nicht zum Lesen geöffnet werden, weil es nicht existiert.</translation>
    </message>
    <message>
        <source>Failed to open &quot;%1&quot; because it is not readable.</source>
        <translation>&quot;%1&quot; konnte nicht geöffnet werden, weil es nicht lesbar ist.</translation>
    </message>
    <message>
        <source>Failed to open &quot;%1&quot; as writable because it is read only.</source>
        <translation>&quot;%1&quot; konnte nicht zum Schreiben geöffnet werden, weil es schreibgeschützt ist.</translation>
    </message>
    <message>
        <source>Failed to open &quot;%1&quot; because it is a directory.</source>
        <translation>&quot;%1&quot; konnte nicht geöffnet werden, weil es ein Ordner ist.</translation>
    </message>
    <message>
        <source>Failed to open &quot;%1&quot;. %2 (errno=%3)</source>
        <translation>&quot;%1&quot; konnte nicht geöffnet werden. %2 (errno=%3)</translation>
    </message>
    <message>
        <source>Failed to fopen &quot;%1&quot; as read only because it does not exist.</source>
        <translation>&quot;%1&quot; konnte mit fopen nicht zum Lesen geöffnet werden, weil es nicht existiert.</translation>
    </message>
    <message>
        <source>Failed to fopen &quot;%1&quot; because it is not readable.</source>
        <translation>&quot;%1&quot; konnte mit fopen nicht geöffnet werden, weil es nicht lesbar ist.</translation>
    </message>
    <message>
        <source>Failed to fopen &quot;%1&quot; as writable because it is read only.</source>
        <translation>&quot;%1&quot; konnte mit fopen nicht zum Schreiben geöffnet werden, weil es schreibgeschützt ist.</translation>
    </message>
    <message>
        <source>Failed to fopen &quot;%1&quot;. %2 (errno=%3)</source>
        <translation>&quot;%1&quot; konnte mit fopen nicht geöffnet werden. %2 (errno=%3)</translation>
    </message>
    <message>
        <source>Could not open input file.</source>
        <translation>Die Eingabedatei konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>Could not create empty file.</source>
        <translation>Die leere Datei konnte nicht angelegt werden.</translation>
    </message>
    <message>
        <source>Could not open output file.</source>
        <translation>Die Ausgabedatei konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>Could not rename file.</source>
        <translation>Die Datei konnte nicht umbenannt werden.</translation>
    </message>
    <message>
        <source>Could not read input file. %1</source>
        <translation>Eingabedatei konnte nicht gelesen werden. %1</translation>
    </message>
    <message>
        <source>Could not write output file. %1</source>
        <translation>Ausgabedatei konnte nicht geschrieben werden. %1</translation>
    </message>
    <message>
        <source>Could not put &quot;%1&quot; into the trash: %2</source>
        <translation>&quot;%1&quot; konnte nicht in den Papierkorb gelegt werden: %2</translation>
    </message>
    <message>
        <source>The path is longer than %1 characters.</source>
        <translation>Der Pfad ist länger als %1 Zeichen.</translation>
    </message>
    <message>
        <source>It holds another file system at &quot;%1&quot;.</source>
        <translation>Er enthält ein anderes Dateisystem unter &quot;%1&quot;.</translation>
    </message>
    <message>
        <source>The system answered %1.</source>
        <translation>Das System antwortete %1.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; holds another file system at &quot;%2&quot;; it was left as it is.</source>
        <translation>&quot;%1&quot; enthält ein anderes Dateisystem unter &quot;%2&quot;; es wurde so belassen, wie es ist.</translation>
    </message>
    <message>
        <source>Could not delete &quot;%1&quot;.</source>
        <translation>&quot;%1&quot; konnte nicht gelöscht werden.</translation>
    </message>
    <message>
        <source>The trash could not record where it came from, and it could not be moved back. It is in &quot;%1&quot;.</source>
        <translation>Der Papierkorb konnte nicht festhalten, woher es kam, und es konnte nicht zurückgelegt werden. Es liegt in &quot;%1&quot;.</translation>
    </message>
    <message>
        <source>The trash could not record where it came from (the disk may be full, or the name too long), so it was left where it was.</source>
        <translation>Der Papierkorb konnte nicht festhalten, woher es kam (vielleicht ist der Datenträger voll oder der Name zu lang), daher blieb es, wo es war.</translation>
    </message>
    <message>
        <source>The desktop&apos;s trash (GIO) is missing.</source>
        <translation>Der Papierkorb der Arbeitsumgebung (GIO) fehlt.</translation>
    </message>
    <message>
        <source>It was left in its place.</source>
        <translation>Es wurde an seinem Platz gelassen.</translation>
    </message>
</context>
<context>
    <name>NetworkTools</name>
    <message>
        <source>Error Code: %1 (%2)</source>
        <translation>Fehlercode: %1 (%2)</translation>
    </message>
</context>
<context>
    <name>NetworkTransfer</name>
    <message>
        <source>Error Encountered</source>
        <translation>Fehler aufgetreten</translation>
    </message>
    <message>
        <source>Transfer failed, please try again later.</source>
        <translation>Die Übertragung ist fehlgeschlagen. Bitte versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>The download could not be written to disk.</source>
        <translation>Der Download konnte nicht auf den Datenträger geschrieben werden.</translation>
    </message>
</context>
<context>
    <name>RemovalDialogs</name>
    <message>
        <source>Not Removed</source>
        <translation>Nicht entfernt</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was a link: only the link was removed. Its data is still in &quot;%2&quot;.</source>
        <translation>&quot;%1&quot; war eine Verknüpfung: Nur die Verknüpfung wurde entfernt. Ihre Daten liegen weiterhin in &quot;%2&quot;.</translation>
    </message>
    <message>
        <source>Link Removed</source>
        <translation>Verknüpfung entfernt</translation>
    </message>
    <message>
        <source>Delete for Good?</source>
        <translation>Endgültig löschen?</translation>
    </message>
    <message>
        <source>%1

Delete &quot;%2&quot; for good instead? This cannot be undone.</source>
        <translation>%1

Stattdessen &quot;%2&quot; endgültig löschen? Das kann nicht rückgängig gemacht werden.</translation>
    </message>
</context>
<context>
    <name>ReportCommandLine</name>
    <message>
        <source>Show this help and exit.</source>
        <translation>Diese Hilfe anzeigen und beenden.</translation>
    </message>
    <message>
        <source>Show the version and exit.</source>
        <translation>Die Version anzeigen und beenden.</translation>
    </message>
    <message>
        <source>Prints the Corvanta Support report on standard output: the same text that
&quot;Copy Report&quot; puts on the clipboard. The desktop&apos;s display is used when there
is one.</source>
        <translation>Gibt den Bericht von Corvanta Support auf der Standardausgabe aus: denselben
Text, den „Bericht kopieren“ in die Zwischenablage legt. Die Anzeige des
Desktops wird verwendet, wenn es eine gibt.</translation>
    </message>
    <message>
        <source>unknown argument &quot;%1&quot;</source>
        <translation>unbekanntes Argument &quot;%1&quot;</translation>
    </message>
    <message>
        <source>%1; see --help</source>
        <translation>%1; siehe --help</translation>
    </message>
    <message>
        <source>cannot write: %1</source>
        <translation>Schreiben nicht möglich: %1</translation>
    </message>
    <message>
        <source>Print the report as text (the default) or as json.</source>
        <translation>Den Bericht als Text (Vorgabe) oder als json ausgeben.</translation>
    </message>
    <message>
        <source>Also write the report into a new folder &quot;Corvanta Support Report &lt;UTC time&gt;&quot; in DIR: report.txt, report.png, report.json and SHA256SUMS.</source>
        <translation>Den Bericht zusätzlich in einen neuen Ordner „Corvanta Support Report &lt;UTC-Zeit&gt;“ in DIR schreiben: report.txt, report.png, report.json und SHA256SUMS.</translation>
    </message>
    <message>
        <source>Print what changed since the JSON report EARLIER, section by section, instead of the report; with LATER, what changed between the two files.</source>
        <translation>Statt des Berichts ausgeben, was sich seit dem JSON-Bericht EARLIER geändert hat, Abschnitt für Abschnitt; mit LATER, was sich zwischen den beiden Dateien geändert hat.</translation>
    </message>
    <message>
        <source>With --diff, a later JSON report to compare instead of the machine.</source>
        <translation>Mit --diff ein späterer JSON-Bericht, der statt des Rechners verglichen wird.</translation>
    </message>
    <message>
        <source>unknown format &quot;%1&quot;; use text or json</source>
        <translation>unbekanntes Format &quot;%1&quot;; text oder json verwenden</translation>
    </message>
    <message>
        <source>--diff prints text; leave out --format json</source>
        <translation>--diff gibt Text aus; --format json weglassen</translation>
    </message>
    <message>
        <source>--save saves this machine&apos;s report; leave out LATER</source>
        <translation>--save speichert den Bericht dieses Rechners; LATER weglassen</translation>
    </message>
    <message>
        <source>
Examples:
  corvanta-support-report &gt; report.txt
  corvanta-support-report --format json --redact &gt; report.json
  corvanta-support-report --redact --save ~/Desktop &gt; /dev/null
  corvanta-support-report --diff report.json
  corvanta-support-report --diff monday.json tuesday.json
</source>
        <translation>
Beispiele:
  corvanta-support-report &gt; report.txt
  corvanta-support-report --format json --redact &gt; report.json
  corvanta-support-report --redact --save ~/Desktop &gt; /dev/null
  corvanta-support-report --diff report.json
  corvanta-support-report --diff montag.json dienstag.json
</translation>
    </message>
    <message>
        <source>
Exit status:
  0  the report, the help or the version was printed;
     with --diff: nothing changed
  1  the output or the saved report could not be written;
     with --diff: something changed
  2  the command line was not understood;
     with --diff: a report could not be read, or the output written
</source>
        <translation>
Exit-Status:
  0  der Bericht, die Hilfe oder die Version wurde ausgegeben;
     mit --diff: nichts hat sich geändert
  1  die Ausgabe oder der gespeicherte Bericht konnte nicht geschrieben werden;
     mit --diff: etwas hat sich geändert
  2  die Befehlszeile wurde nicht verstanden;
     mit --diff: ein Bericht war nicht lesbar oder die Ausgabe nicht schreibbar
</translation>
    </message>
    <message>
        <source>saved the report in &quot;%1&quot;</source>
        <translation>Bericht gespeichert in &quot;%1&quot;</translation>
    </message>
    <message>
        <source>cannot write the report: %1</source>
        <translation>Bericht kann nicht geschrieben werden: %1</translation>
    </message>
    <message>
        <source>Replace the host name, the user name, MAC and IP addresses and the product&apos;s user identifier with placeholders such as host-1; the home folder becomes ~. Applies to everything written. A value keeps its placeholder from run to run: they are kept in ~/.config/corvanta-support/redaction-placeholders; delete it to start afresh.</source>
        <translation>Rechnernamen, Benutzernamen, MAC- und IP-Adressen und die Benutzerkennung des Produkts durch Platzhalter wie host-1 ersetzen; der Benutzerordner wird zu ~. Gilt für alles Geschriebene. Ein Wert behält seinen Platzhalter von Lauf zu Lauf: Sie werden in ~/.config/corvanta-support/redaction-placeholders aufbewahrt; löschen Sie die Datei, um neu zu beginnen.</translation>
    </message>
    <message>
        <source>--save needs the folder to save the report in</source>
        <translation>--save braucht den Ordner, in dem der Bericht gespeichert werden soll</translation>
    </message>
    <message>
        <source>--save needs a folder, not a file</source>
        <translation>--save braucht einen Ordner, keine Datei</translation>
    </message>
    <message>
        <source>a folder, not a report</source>
        <translation>ein Ordner, kein Bericht</translation>
    </message>
    <message>
        <source>not a regular file, so not a report</source>
        <translation>keine gewöhnliche Datei, also kein Bericht</translation>
    </message>
    <message>
        <source>larger than 64 MiB, so not a report</source>
        <translation>größer als 64 MiB, also kein Bericht</translation>
    </message>
    <message>
        <source>cannot keep the placeholders for the next run: %1</source>
        <translation>die Platzhalter können nicht für den nächsten Lauf aufbewahrt werden: %1</translation>
    </message>
    <message>
        <source>cannot save the report: %1</source>
        <translation>Bericht kann nicht gespeichert werden: %1</translation>
    </message>
</context>
<context>
    <name>ReportExport</name>
    <message>
        <source>Select Folder</source>
        <translation>Ordner auswählen</translation>
    </message>
    <message>
        <source>Your email program failed to open.&lt;br&gt;&lt;br&gt;Please use File &gt; Save Report and attach the files in an email to %1</source>
        <translation>Ihr E-Mail-Programm konnte nicht geöffnet werden.&lt;br&gt;&lt;br&gt;Bitte verwenden Sie Datei &gt; Bericht speichern und hängen Sie die Dateien an eine E-Mail an %1 an.</translation>
    </message>
    <message>
        <source>Report not saved: no folder was chosen.</source>
        <translation>Bericht nicht gespeichert: Es wurde kein Ordner gewählt.</translation>
    </message>
    <message>
        <source>Report saved in %1</source>
        <translation>Bericht gespeichert in %1</translation>
    </message>
    <message>
        <source>Report not saved: no folder can be made in %1.</source>
        <translation>Bericht nicht gespeichert: In %1 kann kein Ordner angelegt werden.</translation>
    </message>
    <message>
        <source>Report not saved in full: its files cannot be written in %1.</source>
        <translation>Bericht nicht vollständig gespeichert: Seine Dateien können in %1 nicht geschrieben werden.</translation>
    </message>
</context>
<context>
    <name>SupportApplication</name>
    <message>
        <source>Copy Report</source>
        <translation>Bericht kopieren</translation>
    </message>
    <message>
        <source>Report copied to the clipboard.</source>
        <translation>Bericht in die Zwischenablage kopiert.</translation>
    </message>
    <message>
        <source>Save Report</source>
        <translation>Bericht speichern</translation>
    </message>
    <message>
        <source>E-mail Report</source>
        <translation>Bericht per E-Mail senden</translation>
    </message>
    <message>
        <source>%1 waits for the network&apos;s answers...</source>
        <translation>%1 wartet auf die Antworten des Netzwerks...</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>%1 cancelled.</source>
        <translation>%1 abgebrochen.</translation>
    </message>
</context>
<context>
    <name>SupportBenchmarkFileIoTask</name>
    <message>
        <source>Creating %1 files...</source>
        <translation>%1 Dateien werden angelegt...</translation>
    </message>
    <message>
        <source>Deleting %1 files...</source>
        <translation>%1 Dateien werden gelöscht...</translation>
    </message>
    <message>
        <source>Moving %1 files...</source>
        <translation>%1 Dateien werden verschoben...</translation>
    </message>
    <message>
        <source>Copying %1 files...</source>
        <translation>%1 Dateien werden kopiert...</translation>
    </message>
    <message>
        <source>Sequentially seeking %1 times...</source>
        <translation>%1-mal sequenziell positionieren...</translation>
    </message>
    <message>
        <source>Sequentially reading %1 times...</source>
        <translation>%1-mal sequenziell lesen...</translation>
    </message>
    <message>
        <source>Sequentially writing %1 times...</source>
        <translation>%1-mal sequenziell schreiben...</translation>
    </message>
    <message>
        <source>Randomly seeking %1 times...</source>
        <translation>%1-mal zufällig positionieren...</translation>
    </message>
</context>
<context>
    <name>SupportCorvantaTab</name>
    <message>
        <source>Remove All Associations</source>
        <translation>Alle Dateizuordnungen entfernen</translation>
    </message>
    <message>
        <source>All %1 file associations will be removed.</source>
        <translation>Alle Dateizuordnungen von %1 werden entfernt.</translation>
    </message>
    <message>
        <source>Repair Preferences</source>
        <translation>Einstellungen reparieren</translation>
    </message>
    <message>
        <source>Remove Preferences</source>
        <translation>Einstellungen entfernen</translation>
    </message>
    <message>
        <source>All %1 preferences will be put into the trash bin.</source>
        <translation>Alle Einstellungen von %1 werden in den Papierkorb verschoben.</translation>
    </message>
    <message>
        <source>Remove All Application Data</source>
        <translation>Alle Anwendungsdaten entfernen</translation>
    </message>
    <message>
        <source>All %1 file associations, preferences, temporary files,
cached lists of online plasmids, crash reports,
and custom common features will be put into the trash bin.</source>
        <translation>Alle Dateizuordnungen, Einstellungen, temporären Dateien,
zwischengespeicherten Listen von Online-Plasmiden, Absturzberichte
und eigenen allgemeinen Merkmale von %1 werden in den Papierkorb verschoben.</translation>
    </message>
</context>
<context>
    <name>SupportDisplayTab</name>
    <message>
        <source>Apply DPI Workaround</source>
        <translation>DPI-Workaround anwenden</translation>
    </message>
    <message>
        <source>Remove DPI Workaround</source>
        <translation>DPI-Workaround entfernen</translation>
    </message>
    <message>
        <source>The DPI workaround could not be applied.</source>
        <translation>Die DPI-Korrektur konnte nicht angewendet werden.</translation>
    </message>
    <message>
        <source>DPI workaround applied. It takes effect at your next sign-in.</source>
        <translation>DPI-Korrektur angewendet. Sie wirkt ab Ihrer nächsten Anmeldung.</translation>
    </message>
    <message>
        <source>The DPI workaround could not be removed.</source>
        <translation>Die DPI-Korrektur konnte nicht entfernt werden.</translation>
    </message>
    <message>
        <source>DPI workaround removed. This takes effect at your next sign-in.</source>
        <translation>DPI-Korrektur entfernt. Das wirkt ab Ihrer nächsten Anmeldung.</translation>
    </message>
</context>
<context>
    <name>SupportLoader</name>
    <message>
        <source>Loading %1 data...</source>
        <translation>%1-Daten werden geladen...</translation>
    </message>
</context>
<context>
    <name>SupportMainWindow</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Save Report...</source>
        <translation>Bericht &amp;speichern...</translation>
    </message>
    <message>
        <source>&amp;Email Report...</source>
        <translation>Bericht per &amp;E-Mail senden...</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Copy Report</source>
        <translation>Bericht &amp;kopieren</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About %1</source>
        <translation>Ü&amp;ber %1</translation>
    </message>
</context>
<context>
    <name>SupportPermissionsTab</name>
    <message>
        <source>Check File</source>
        <translation>Datei prüfen</translation>
    </message>
    <message>
        <source>Check Folder</source>
        <translation>Ordner prüfen</translation>
    </message>
    <message>
        <source>Choose File</source>
        <translation>Datei auswählen</translation>
    </message>
    <message>
        <source>Choose Folder</source>
        <translation>Ordner auswählen</translation>
    </message>
    <message>
        <source>Path:
%1

Permissions:
%2</source>
        <translation>Pfad:
%1

Berechtigungen:
%2</translation>
    </message>
</context>
<context>
    <name>SupportRepairPreferencesTask</name>
    <message>
        <source>Repairing %1...</source>
        <translation>%1 wird repariert...</translation>
    </message>
    <message>
        <source>There are no preferences to repair: &quot;%1&quot; does not exist.</source>
        <translation>Es gibt keine Einstellungen zu reparieren: &quot;%1&quot; existiert nicht.</translation>
    </message>
    <message>
        <source>Could not repair &quot;%1&quot;: %2</source>
        <translation>&quot;%1&quot; konnte nicht repariert werden: %2</translation>
    </message>
    <message>
        <source>Nothing in &quot;%1&quot; needed repair.</source>
        <translation>In &quot;%1&quot; musste nichts repariert werden.</translation>
    </message>
    <message>
        <source>Stored dates and times emptied in &quot;%1&quot;: %2.</source>
        <translation>Geleerte gespeicherte Datums- und Zeitwerte in &quot;%1&quot;: %2.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a file, so it was left alone.</source>
        <translation>&quot;%1&quot; ist keine Datei und wurde daher nicht angetastet.</translation>
    </message>
</context>
<context>
    <name>SupportSystemTab</name>
    <message>
        <source>Benchmark File I/O</source>
        <translation>Datei-E/A messen</translation>
    </message>
    <message>
        <source>Choose Location</source>
        <translation>Speicherort auswählen</translation>
    </message>
</context>
<context>
    <name>SupportTabs</name>
    <message>
        <source>Display</source>
        <translation>Anzeige</translation>
    </message>
    <message>
        <source>Fonts</source>
        <translation>Schriften</translation>
    </message>
    <message>
        <source>Permissions</source>
        <translation>Berechtigungen</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
</context>
</TS>
