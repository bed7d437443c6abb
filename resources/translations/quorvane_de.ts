<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>AsideWindow</name>
    <message>
        <source>Set Aside</source>
        <translation>Beiseitegelegt</translation>
    </message>
    <message>
        <source>Rules that are set aside</source>
        <translation>Beiseitegelegte Regeln</translation>
    </message>
    <message>
        <source>&amp;Delete...</source>
        <translation>&amp;Löschen...</translation>
    </message>
    <message>
        <source>Delete the selected rules for good</source>
        <translation>Die ausgewählten Regeln endgültig löschen</translation>
    </message>
    <message>
        <source>&amp;Bring Back</source>
        <translation>Zurück&amp;holen</translation>
    </message>
    <message>
        <source>Put the selected rules in force again, with tag and date</source>
        <translation>Die ausgewählten Regeln wieder in Kraft setzen, mit Tag und Datum</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
</context>
<context>
    <name>ChangeWindow</name>
    <message>
        <source>What will change</source>
        <translation>Was sich ändern wird</translation>
    </message>
    <message>
        <source>&amp;Write Whole Lines</source>
        <translation>Ganze &amp;Zeilen schreiben</translation>
    </message>
    <message>
        <source>From now on write every letter of every rule, also beyond ASCII</source>
        <translation>Von jetzt an jeden Buchstaben jeder Regel schreiben, auch jenseits von ASCII</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>EditPolicyWindowController</name>
    <message>
        <source>Icon of the program</source>
        <translation>Symbol des Programms</translation>
    </message>
    <message>
        <source>&amp;Class</source>
        <translation>&amp;Klasse</translation>
    </message>
    <message>
        <source>Whether the program may use the path or must not</source>
        <translation>Ob das Programm den Pfad benutzen darf oder nicht</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Allow</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>Deny</translation>
    </message>
    <message>
        <source>&amp;Path</source>
        <translation>&amp;Pfad</translation>
    </message>
    <message>
        <source>/folder/, /file or .extension</source>
        <translation>/Ordner/, /Datei oder .Endung</translation>
    </message>
    <message>
        <source>The folder, the file or the end of names that the rule is about</source>
        <translation>Der Ordner, die Datei oder die Namensendung, um die es in der Regel geht</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>Browse for the path</source>
        <translation>Pfad auswählen</translation>
    </message>
    <message>
        <source>Choose a file or a folder</source>
        <translation>Datei oder Ordner auswählen</translation>
    </message>
    <message>
        <source>&amp;Type</source>
        <translation>&amp;Typ</translation>
    </message>
    <message>
        <source>How paths are compared with this one; follows the path while you type it</source>
        <translation>Wie Pfade mit diesem verglichen werden; richtet sich beim Tippen nach dem Pfad</translation>
    </message>
    <message>
        <source>Prefix: a folder and everything in it</source>
        <translation>Prefix: ein Ordner und alles darin</translation>
    </message>
    <message>
        <source>Path: exactly this path</source>
        <translation>Path: genau dieser Pfad</translation>
    </message>
    <message>
        <source>Suffix: every path that ends like this</source>
        <translation>Suffix: jeder Pfad, der so endet</translation>
    </message>
    <message>
        <source>Pr&amp;ogram</source>
        <translation>P&amp;rogramm</translation>
    </message>
    <message>
        <source>/path/of/program or any</source>
        <translation>/Pfad/des/Programms oder any</translation>
    </message>
    <message>
        <source>The program that the rule is about, or “any” for all of them</source>
        <translation>Das Programm, um das es in der Regel geht, oder „any“ für alle</translation>
    </message>
    <message>
        <source>Brow&amp;se…</source>
        <translation>D&amp;urchsuchen…</translation>
    </message>
    <message>
        <source>Browse for the program</source>
        <translation>Programm auswählen</translation>
    </message>
    <message>
        <source>Choose a program or an application</source>
        <translation>Programm oder Anwendung auswählen</translation>
    </message>
    <message>
        <source>Team ID</source>
        <translation>Team ID</translation>
    </message>
    <message>
        <source>SHA-1, SHA-256 or team, or nothing</source>
        <translation>SHA-1, SHA-256 oder Team, oder nichts</translation>
    </message>
    <message>
        <source>The SHA-1 or SHA-256 digest that the program must have, or the team that must have signed it; empty for neither</source>
        <translation>Die SHA-1- oder SHA-256-Prüfsumme, die das Programm haben muss, oder das Team, das es signiert haben muss; leer für keines von beiden</translation>
    </message>
    <message>
        <source>Operations</source>
        <translation>Operationen</translation>
    </message>
    <message>
        <source>&amp;Read</source>
        <translation>&amp;Lesen</translation>
    </message>
    <message>
        <source>Reading what is at the path</source>
        <translation>Lesen, was unter dem Pfad liegt</translation>
    </message>
    <message>
        <source>&amp;Write</source>
        <translation>&amp;Schreiben</translation>
    </message>
    <message>
        <source>Changing or deleting what is at the path</source>
        <translation>Ändern oder löschen, was unter dem Pfad liegt</translation>
    </message>
    <message>
        <source>Cr&amp;eate</source>
        <translation>&amp;Anlegen</translation>
    </message>
    <message>
        <source>Making something new at the path</source>
        <translation>Unter dem Pfad etwas Neues anlegen</translation>
    </message>
    <message>
        <source>&amp;Mount</source>
        <translation>&amp;Einhängen</translation>
    </message>
    <message>
        <source>Mounting a volume at the path</source>
        <translation>Unter dem Pfad einen Datenträger einhängen</translation>
    </message>
    <message>
        <source>E&amp;xecute</source>
        <translation>Aus&amp;führen</translation>
    </message>
    <message>
        <source>Starting a program at the path</source>
        <translation>Unter dem Pfad ein Programm starten</translation>
    </message>
    <message>
        <source>System rule</source>
        <translation>Systemregel</translation>
    </message>
    <message>
        <source>A system rule: it can be looked at, not changed.</source>
        <translation>Eine Systemregel: Sie kann angesehen, aber nicht geändert werden.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close this window and change nothing</source>
        <translation>Dieses Fenster schließen und nichts ändern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Save the rule and close this window</source>
        <translation>Die Regel speichern und dieses Fenster schließen</translation>
    </message>
</context>
<context>
    <name>EditWatchWindowController</name>
    <message>
        <source>Icon of the program</source>
        <translation>Symbol des Programms</translation>
    </message>
    <message>
        <source>&amp;Path</source>
        <translation>&amp;Pfad</translation>
    </message>
    <message>
        <source>/folder/, /file or .extension</source>
        <translation>/Ordner/, /Datei oder .Endung</translation>
    </message>
    <message>
        <source>The folder, the file or the end of names that the rule is about</source>
        <translation>Der Ordner, die Datei oder die Namensendung, um die es in der Regel geht</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>Browse for the path</source>
        <translation>Pfad auswählen</translation>
    </message>
    <message>
        <source>Choose a file or a folder</source>
        <translation>Datei oder Ordner auswählen</translation>
    </message>
    <message>
        <source>&amp;Type</source>
        <translation>&amp;Typ</translation>
    </message>
    <message>
        <source>How paths are compared with this one; follows the path while you type it</source>
        <translation>Wie Pfade mit diesem verglichen werden; richtet sich beim Tippen nach dem Pfad</translation>
    </message>
    <message>
        <source>Prefix: a folder and everything in it</source>
        <translation>Prefix: ein Ordner und alles darin</translation>
    </message>
    <message>
        <source>Path: exactly this path</source>
        <translation>Path: genau dieser Pfad</translation>
    </message>
    <message>
        <source>Suffix: every path that ends like this</source>
        <translation>Suffix: jeder Pfad, der so endet</translation>
    </message>
    <message>
        <source>Pr&amp;ogram</source>
        <translation>P&amp;rogramm</translation>
    </message>
    <message>
        <source>/path/of/program or any</source>
        <translation>/Pfad/des/Programms oder any</translation>
    </message>
    <message>
        <source>The program that the rule is about, or “any” for all of them</source>
        <translation>Das Programm, um das es in der Regel geht, oder „any“ für alle</translation>
    </message>
    <message>
        <source>Brow&amp;se…</source>
        <translation>D&amp;urchsuchen…</translation>
    </message>
    <message>
        <source>Browse for the program</source>
        <translation>Programm auswählen</translation>
    </message>
    <message>
        <source>Choose a program or an application</source>
        <translation>Programm oder Anwendung auswählen</translation>
    </message>
    <message>
        <source>Operations</source>
        <translation>Operationen</translation>
    </message>
    <message>
        <source>&amp;Read</source>
        <translation>&amp;Lesen</translation>
    </message>
    <message>
        <source>Reading what is at the path</source>
        <translation>Lesen, was unter dem Pfad liegt</translation>
    </message>
    <message>
        <source>&amp;Write</source>
        <translation>&amp;Schreiben</translation>
    </message>
    <message>
        <source>Changing or deleting what is at the path</source>
        <translation>Ändern oder löschen, was unter dem Pfad liegt</translation>
    </message>
    <message>
        <source>Cr&amp;eate</source>
        <translation>&amp;Anlegen</translation>
    </message>
    <message>
        <source>Making something new at the path</source>
        <translation>Unter dem Pfad etwas Neues anlegen</translation>
    </message>
    <message>
        <source>&amp;Mount</source>
        <translation>&amp;Einhängen</translation>
    </message>
    <message>
        <source>Mounting a volume at the path</source>
        <translation>Unter dem Pfad einen Datenträger einhängen</translation>
    </message>
    <message>
        <source>E&amp;xecute</source>
        <translation>Aus&amp;führen</translation>
    </message>
    <message>
        <source>Starting a program at the path</source>
        <translation>Unter dem Pfad ein Programm starten</translation>
    </message>
    <message>
        <source>System rule</source>
        <translation>Systemregel</translation>
    </message>
    <message>
        <source>A system rule: it can be looked at, not changed.</source>
        <translation>Eine Systemregel: Sie kann angesehen, aber nicht geändert werden.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Close this window and change nothing</source>
        <translation>Dieses Fenster schließen und nichts ändern</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Save the rule and close this window</source>
        <translation>Die Regel speichern und dieses Fenster schließen</translation>
    </message>
</context>
<context>
    <name>HistoryWindow</name>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>&amp;Versions of</source>
        <translation>&amp;Versionen von</translation>
    </message>
    <message>
        <source>&amp;Search</source>
        <translation>&amp;Suche</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>Action, program, or text of a rule</source>
        <translation>Aktion, Programm oder Text einer Regel</translation>
    </message>
    <message>
        <source>Show only versions whose description, or whose changes, contain this text</source>
        <translation>Nur Versionen anzeigen, deren Beschreibung oder Änderungen diesen Text enthalten</translation>
    </message>
    <message>
        <source>Versions</source>
        <translation>Versionen</translation>
    </message>
    <message>
        <source>Changes of the version</source>
        <translation>Änderungen der Version</translation>
    </message>
    <message>
        <source>&amp;Forget...</source>
        <translation>Ver&amp;gessen...</translation>
    </message>
    <message>
        <source>Remove old versions from the history</source>
        <translation>Alte Versionen aus dem Verlauf entfernen</translation>
    </message>
    <message>
        <source>&amp;Export...</source>
        <translation>&amp;Exportieren...</translation>
    </message>
    <message>
        <source>Save the selected version as a file</source>
        <translation>Die ausgewählte Version als Datei speichern</translation>
    </message>
    <message>
        <source>&amp;Restore</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
    <message>
        <source>Put the selected version in force again</source>
        <translation>Die ausgewählte Version wieder in Kraft setzen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
</context>
<context>
    <name>ImportWindowController</name>
    <message>
        <source>Rules to import</source>
        <translation>Zu importierende Regeln</translation>
    </message>
    <message>
        <source>&amp;Take Apart</source>
        <translation>A&amp;ufteilen</translation>
    </message>
    <message>
        <source>List the rules of lines that hold several as rules of their own</source>
        <translation>Die Regeln aus Zeilen, die mehrere enthalten, einzeln auflisten</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>Close without importing</source>
        <translation>Schließen, ohne zu importieren</translation>
    </message>
    <message>
        <source>&amp;Import</source>
        <translation>&amp;Importieren</translation>
    </message>
    <message>
        <source>Add the ticked rules to your rules</source>
        <translation>Die angekreuzten Regeln zu Ihren Regeln hinzufügen</translation>
    </message>
</context>
<context>
    <name>MapWindow</name>
    <message>
        <source>Access Map</source>
        <translation>Zugriffskarte</translation>
    </message>
    <message>
        <source>&amp;Order</source>
        <translation>&amp;Ordnung</translation>
    </message>
    <message>
        <source>By folder</source>
        <translation>Nach Ordner</translation>
    </message>
    <message>
        <source>By program</source>
        <translation>Nach Programm</translation>
    </message>
    <message>
        <source>S&amp;ystem rules</source>
        <translation>S&amp;ystemregeln</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Allow</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>Deny</translation>
    </message>
    <message>
        <source>Watch</source>
        <translation>Watch</translation>
    </message>
    <message>
        <source>Places that rules are about</source>
        <translation>Orte, um die es in Regeln geht</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
</context>
<context>
    <name>QMessageBox</name>
    <message>
        <source>Forget Versions</source>
        <translation>Versionen vergessen</translation>
    </message>
    <message>
        <source>Forget versions of the %1? They can then no longer be shown, exported, restored or undone.</source>
        <translation>Versionen von „%1“ vergessen? Sie können dann nicht mehr angezeigt, exportiert, wiederhergestellt oder rückgängig gemacht werden.</translation>
    </message>
    <message>
        <source>Forget %1 &amp;Older</source>
        <translation>%1 äl&amp;tere vergessen</translation>
    </message>
    <message>
        <source>

Older than version %1: %2.</source>
        <translation>

Älter als Version %1: %2.</translation>
    </message>
    <message>
        <source>Forget &amp;All %1</source>
        <translation>&amp;Alle %1 vergessen</translation>
    </message>
    <message>
        <source>

All: %1. Version %2, the newest, stays.</source>
        <translation>

Alle: %1. Version %2, die neueste, bleibt.</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>lock: any program</source>
        <translation>Schloss: jedes Programm</translation>
    </message>
    <message>
        <source>Use Path</source>
        <translation>Use Path</translation>
    </message>
</context>
<context>
    <name>QVPreferencesWindow</name>
    <message>
        <source>Quorvane Preferences</source>
        <translation>Quorvane Preferences</translation>
    </message>
    <message>
        <source>Users&apos; own rules</source>
        <translation>Eigene Regeln der Benutzer</translation>
    </message>
    <message>
        <source>Ordinary users may create rules</source>
        <translation>Normale Benutzer dürfen Regeln anlegen</translation>
    </message>
    <message>
        <source>Everybody may write to the shared rules folder, not only administrators. A change asks for an administrator&apos;s password.</source>
        <translation>Alle dürfen in den gemeinsamen Regelordner schreiben, nicht nur Administratoren. Zum Ändern ist das Passwort eines Administrators nötig.</translation>
    </message>
    <message>
        <source>Restrict users&apos; own rules</source>
        <translation>Eigene Regeln der Benutzer einschränken</translation>
    </message>
    <message>
        <source>Rules that ordinary users create hold within limits only.</source>
        <translation>Regeln, die normale Benutzer anlegen, gelten nur in Grenzen.</translation>
    </message>
    <message>
        <source>&amp;Detail of users&apos; access</source>
        <translation>&amp;Detailgrad der Benutzerzugriffe</translation>
    </message>
    <message>
        <source>Full</source>
        <translation>Vollständig</translation>
    </message>
    <message>
        <source>Reduced</source>
        <translation>Reduziert</translation>
    </message>
    <message>
        <source>Minimal</source>
        <translation>Minimal</translation>
    </message>
    <message>
        <source>How much is told about what users access.</source>
        <translation>Wie viel darüber mitgeteilt wird, worauf Benutzer zugreifen.</translation>
    </message>
    <message>
        <source>Programs</source>
        <translation>Programme</translation>
    </message>
    <message>
        <source>Allow signed execution</source>
        <translation>Ausführung signierter Programme erlauben</translation>
    </message>
    <message>
        <source>Programs with a valid code signature may be executed.</source>
        <translation>Programme mit gültiger Codesignatur dürfen ausgeführt werden.</translation>
    </message>
    <message>
        <source>Allow what is preloaded</source>
        <translation>Mitgelieferte Programme erlauben</translation>
    </message>
    <message>
        <source>Programs that came with the system are on the list of what is allowed (system rules in user.rc).</source>
        <translation>Programme, die mit dem System kamen, stehen auf der Liste des Erlaubten (Systemregeln in user.rc).</translation>
    </message>
    <message>
        <source>System rules</source>
        <translation>Systemregeln</translation>
    </message>
    <message>
        <source>Strict system rules</source>
        <translation>Strenge Systemregeln</translation>
    </message>
    <message>
        <source>The strict set of system rules (paranoid.rc) takes the place of the usual one (quorvane.rc).</source>
        <translation>Die strengen Systemregeln (paranoid.rc) treten an die Stelle der üblichen (quorvane.rc).</translation>
    </message>
    <message>
        <source>What is monitored</source>
        <translation>Was überwacht wird</translation>
    </message>
    <message>
        <source>Monitor the webcam</source>
        <translation>Webcam überwachen</translation>
    </message>
    <message>
        <source>Programs that use the camera (system rules in webcam.rc).</source>
        <translation>Programme, die die Kamera benutzen (Systemregeln in webcam.rc).</translation>
    </message>
    <message>
        <source>Monitor start-up items</source>
        <translation>Autostart-Einträge überwachen</translation>
    </message>
    <message>
        <source>What is made to start by itself (system rules in startup.rc).</source>
        <translation>Was so eingerichtet wird, dass es von selbst startet (Systemregeln in startup.rc).</translation>
    </message>
    <message>
        <source>Monitor execution</source>
        <translation>Ausführung überwachen</translation>
    </message>
    <message>
        <source>Programs that are executed (system rules in exec.rc).</source>
        <translation>Programme, die ausgeführt werden (Systemregeln in exec.rc).</translation>
    </message>
    <message>
        <source>Monitor attaching to processes</source>
        <translation>Einklinken in Prozesse überwachen</translation>
    </message>
    <message>
        <source>Programs that take hold of running ones, as debuggers do.</source>
        <translation>Programme, die sich in laufende einklinken, wie es Debugger tun.</translation>
    </message>
    <message>
        <source>Prompts</source>
        <translation>Rückfragen</translation>
    </message>
    <message>
        <source>Prompt while the screen is locked</source>
        <translation>Auch bei gesperrtem Bildschirm nachfragen</translation>
    </message>
    <message>
        <source>Questions are asked even while nobody can see them.</source>
        <translation>Fragen werden auch gestellt, während niemand sie sehen kann.</translation>
    </message>
    <message>
        <source>Require the Touch Bar to answer prompts</source>
        <translation>Für Antworten auf Rückfragen die Touch Bar verlangen</translation>
    </message>
    <message>
        <source>Answers come out of band, out of other programs&apos; reach.</source>
        <translation>Antworten kommen auf einem eigenen Weg, außer Reichweite anderer Programme.</translation>
    </message>
    <message>
        <source>Require authentication to answer prompts</source>
        <translation>Für Antworten auf Rückfragen Authentifizierung verlangen</translation>
    </message>
    <message>
        <source>Whoever answers has to prove first who they are.</source>
        <translation>Wer antwortet, muss sich zuerst ausweisen.</translation>
    </message>
    <message>
        <source>Allow remote administration of prompts</source>
        <translation>Fernverwaltung von Rückfragen erlauben</translation>
    </message>
    <message>
        <source>Prompts can be answered from another computer.</source>
        <translation>Rückfragen können von einem anderen Computer aus beantwortet werden.</translation>
    </message>
    <message>
        <source>Lock</source>
        <translation>Schloss</translation>
    </message>
    <message>
        <source>Only an administrator can change these settings.</source>
        <translation>Nur ein Administrator kann diese Voreinstellungen ändern.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Save</translation>
    </message>
</context>
<context>
    <name>RulesEditorTableController</name>
    <message>
        <source>Rules</source>
        <translation>Regeln</translation>
    </message>
    <message>
        <source>&amp;Search</source>
        <translation>&amp;Suche</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>Path, program or tag</source>
        <translation>Pfad, Programm oder Tag</translation>
    </message>
    <message>
        <source>Show only rules whose path, program or tag contains this text</source>
        <translation>Nur Regeln anzeigen, deren Pfad, Programm oder Tag diesen Text enthält</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>S&amp;ort By</source>
        <translation>S&amp;ortieren nach</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Show System Rules</source>
        <translation>Show System Rules</translation>
    </message>
    <message>
        <source>Show or hide the rules that the product brings along</source>
        <translation>Die Regeln, die das Produkt mitbringt, ein- oder ausblenden</translation>
    </message>
    <message>
        <source>New Rule</source>
        <translation>Neue Regel</translation>
    </message>
    <message>
        <source>Allow or deny something: a new rule</source>
        <translation>Etwas erlauben oder verbieten: eine neue Regel</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete the selected rules</source>
        <translation>Die ausgewählten Regeln löschen</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importieren</translation>
    </message>
    <message>
        <source>Review the rules of a file and add them</source>
        <translation>Die Regeln einer Datei prüfen und hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Import...</source>
        <translation>&amp;Importieren...</translation>
    </message>
    <message>
        <source>E&amp;xport All Rules...</source>
        <translation>Alle Regeln e&amp;xportieren...</translation>
    </message>
    <message>
        <source>Export &amp;Selected Rules...</source>
        <translation>&amp;Ausgewählte Regeln exportieren...</translation>
    </message>
    <message>
        <source>&amp;New Rule...</source>
        <translation>&amp;Neue Regel...</translation>
    </message>
    <message>
        <source>New &amp;Watch Rule...</source>
        <translation>Neue Be&amp;obachtungsregel...</translation>
    </message>
    <message>
        <source>&amp;History...</source>
        <translation>&amp;Verlauf...</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>&amp;Edit Rule...</source>
        <translation>Regel &amp;bearbeiten...</translation>
    </message>
    <message>
        <source>Edit &amp;Tag	F2</source>
        <translation>&amp;Tag bearbeiten	F2</translation>
    </message>
    <message>
        <source>&amp;Delete	Del</source>
        <translation>&amp;Löschen	Entf</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>Prefere&amp;nces...</source>
        <translation>&amp;Voreinstellungen...</translation>
    </message>
    <message>
        <source>&amp;Settings...</source>
        <translation>&amp;Einstellungen...</translation>
    </message>
    <message>
        <source>User &amp;Guide</source>
        <translation>Benutzer&amp;handbuch</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Rules</source>
        <translation>&amp;Regeln</translation>
    </message>
    <message>
        <source>&amp;Class</source>
        <translation>&amp;Klasse</translation>
    </message>
    <message>
        <source>Co&amp;nstraint</source>
        <translation>Ei&amp;nschränkung</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste...</source>
        <translation>&amp;Einfügen...</translation>
    </message>
    <message>
        <source>Dupl&amp;icate...</source>
        <translation>&amp;Duplizieren...</translation>
    </message>
    <message>
        <source>&amp;Tag...</source>
        <translation>&amp;Tag...</translation>
    </message>
    <message>
        <source>&amp;Allow</source>
        <translation>&amp;Allow</translation>
    </message>
    <message>
        <source>&amp;Deny</source>
        <translation>&amp;Deny</translation>
    </message>
    <message>
        <source>&amp;Operations...</source>
        <translation>&amp;Operationen...</translation>
    </message>
    <message>
        <source>&amp;Bind Anew</source>
        <translation>Neu &amp;binden</translation>
    </message>
    <message>
        <source>&amp;Clear</source>
        <translation>&amp;Leeren</translation>
    </message>
    <message>
        <source>Copy to Another &amp;Program...</source>
        <translation>In ein anderes &amp;Programm kopieren...</translation>
    </message>
    <message>
        <source>Program &amp;Moved...</source>
        <translation>Pro&amp;gramm verschoben...</translation>
    </message>
    <message>
        <source>Select &amp;By</source>
        <translation>&amp;Auswählen nach</translation>
    </message>
    <message>
        <source>&amp;What Touches...</source>
        <translation>&amp;Was betrifft...</translation>
    </message>
    <message>
        <source>&amp;Map...</source>
        <translation>&amp;Karte...</translation>
    </message>
    <message>
        <source>C&amp;lean Up...</source>
        <translation>Auf&amp;räumen...</translation>
    </message>
    <message>
        <source>P&amp;revious Problem</source>
        <translation>Vo&amp;riges Problem</translation>
    </message>
    <message>
        <source>Set &amp;Aside</source>
        <translation>&amp;Beiseitelegen</translation>
    </message>
    <message>
        <source>Set &amp;Aside...</source>
        <translation>&amp;Beiseitelegen...</translation>
    </message>
    <message>
        <source>Rules Are &amp;For</source>
        <translation>Regeln gelten &amp;für</translation>
    </message>
    <message>
        <source>&amp;Columns</source>
        <translation>&amp;Spalten</translation>
    </message>
    <message>
        <source>&amp;Narrow</source>
        <translation>&amp;Eingrenzen</translation>
    </message>
    <message>
        <source>Ne&amp;xt Problem</source>
        <translation>Nä&amp;chstes Problem</translation>
    </message>
</context>
<context>
    <name>SettingsWindow</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Rules file</source>
        <translation>Regeldatei</translation>
    </message>
    <message>
        <source>Write &amp;whole lines</source>
        <translation>&amp;Ganze Zeilen schreiben</translation>
    </message>
    <message>
        <source>Rules with letters beyond ASCII, such as accents, are written to their end. Without this their lines are cut short, which is the way of the format, and the next rule follows on the same line.</source>
        <translation>Regeln mit Buchstaben jenseits von ASCII, etwa mit Umlauten oder Akzenten, werden bis zum Ende geschrieben. Andernfalls werden ihre Zeilen abgeschnitten, wie es das Format mit sich bringt, und die nächste Regel folgt in derselben Zeile.</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Keep every version of the &amp;last</source>
        <translation>Jede Version behalten aus den &amp;letzten</translation>
    </message>
    <message>
        <source> days</source>
        <translation> Tagen</translation>
    </message>
    <message>
        <source>Use at &amp;most</source>
        <translation>&amp;Höchstens belegen</translation>
    </message>
    <message>
        <source> MiB</source>
        <translation> MiB</translation>
    </message>
    <message>
        <source>Of older versions one an hour is kept for a month, then one a day for a year. Beyond the size the oldest go first; the newest always stays.</source>
        <translation>Von älteren Versionen bleibt einen Monat lang eine je Stunde, dann ein Jahr lang eine je Tag. Wird die Größe überschritten, entfallen zuerst die ältesten; die neueste bleibt immer.</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
</context>
<context>
    <name>TouchingWindow</name>
    <message>
        <source>What Touches</source>
        <translation>Was betrifft</translation>
    </message>
    <message>
        <source>Rules that touch the path</source>
        <translation>Regeln, die den Pfad betreffen</translation>
    </message>
    <message>
        <source>&amp;Show in Table</source>
        <translation>In der Tabelle &amp;zeigen</translation>
    </message>
    <message>
        <source>Select the rule in the main window</source>
        <translation>Die Regel im Hauptfenster auswählen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
</context>
<context>
    <name>quorvane::app::QVPreferencesWindow</name>
    <message>
        <source>Other (%1)</source>
        <translation>Anderer (%1)</translation>
    </message>
    <message>
        <source>These settings cannot be saved: %1.</source>
        <translation>Diese Voreinstellungen können nicht gespeichert werden: %1.</translation>
    </message>
    <message>
        <source>The file of the settings cannot be read: %1. Shown are the defaults; saving keeps the file under another name.</source>
        <translation>Die Datei der Voreinstellungen kann nicht gelesen werden: %1. Angezeigt werden die Standardwerte; beim Speichern bleibt die Datei unter anderem Namen erhalten.</translation>
    </message>
    <message>
        <source>Failed to save the preferences to &apos;%1&apos;: %2</source>
        <translation>Die Voreinstellungen konnten nicht in „%1“ gespeichert werden: %2</translation>
    </message>
</context>
<context>
    <name>quorvane::app::Surroundings</name>
    <message>
        <source>Reading the rules…</source>
        <translation>Die Regeln werden gelesen…</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::AccessModel</name>
    <message>
        <source>%1 via %2</source>
        <translation>%1 über %2</translation>
    </message>
    <message>
        <source>no program</source>
        <translation>kein Programm</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>%1 more</source>
        <translation>%1 weitere</translation>
    </message>
    <message>
        <source>Every path</source>
        <translation>Jeder Pfad</translation>
    </message>
    <message>
        <source>Paths by their ending</source>
        <translation>Pfade nach ihrer Endung</translation>
    </message>
    <message>
        <source>%1 allow</source>
        <translation>%1 allow</translation>
    </message>
    <message>
        <source>%1 deny</source>
        <translation>%1 deny</translation>
    </message>
    <message>
        <source>%1 watch</source>
        <translation>%1 watch</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Rules</source>
        <translation>Regeln</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Allow</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>Deny</translation>
    </message>
    <message>
        <source>Watch</source>
        <translation>Watch</translation>
    </message>
    <message>
        <source>Programs</source>
        <translation>Programme</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::AsideController</name>
    <message>
        <source>Nothing was set aside: %1</source>
        <translation>Es wurde nichts beiseitegelegt: %1</translation>
    </message>
    <message>
        <source>1 rule is set aside.</source>
        <translation>1 Regel ist beiseitegelegt.</translation>
    </message>
    <message>
        <source>%1 rules are set aside.</source>
        <translation>%1 Regeln sind beiseitegelegt.</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Delete Rules</source>
        <translation>Regeln löschen</translation>
    </message>
    <message>
        <source>Delete %1 for good? Nothing brings back what is deleted here.</source>
        <translation>%1 endgültig löschen? Was hier gelöscht wird, bringt nichts zurück.</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Löschen</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::AsideWindow</name>
    <message>
        <source>No rule is set aside.</source>
        <translation>Keine Regel ist beiseitegelegt.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::AuthenticationWindow</name>
    <message>
        <source>Touch the fingerprint reader, or use your password.</source>
        <translation>Berühren Sie den Fingerabdruckleser oder verwenden Sie Ihr Passwort.</translation>
    </message>
    <message>
        <source>The finger could not be read. Touch the fingerprint reader again.</source>
        <translation>Der Finger konnte nicht gelesen werden. Berühren Sie den Fingerabdruckleser noch einmal.</translation>
    </message>
    <message>
        <source>Waiting for the password of an administrator.</source>
        <translation>Das Passwort eines Administrators wird erwartet.</translation>
    </message>
    <message>
        <source>%1 is trying to %2.</source>
        <translation>%1 versucht Folgendes: %2.</translation>
    </message>
    <message>
        <source>Authentication</source>
        <translation>Authentifizierung</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Use Password</source>
        <translation>Passwort verwenden</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ChangeWindow</name>
    <message>
        <source>Nothing can be changed.</source>
        <translation>Es kann nichts geändert werden.</translation>
    </message>
    <message>
        <source>Nothing would change.</source>
        <translation>Es würde sich nichts ändern.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::CleanUpModel</name>
    <message>
        <source>Rule</source>
        <translation>Regel</translation>
    </message>
    <message>
        <source>Why it can go</source>
        <translation>Warum sie gehen kann</translation>
    </message>
    <message>
        <source>Why it might stay</source>
        <translation>Was dagegen spricht</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::CleanUpWindow</name>
    <message>
        <source>Clean Up</source>
        <translation>Aufräumen</translation>
    </message>
    <message>
        <source>These rules have nothing to do. What is ticked goes, in one step that Undo takes back; what might be wanted again is not ticked.</source>
        <translation>Diese Regeln haben nichts zu tun. Angekreuzte werden in einem Schritt entfernt, den Rückgängig zurücknimmt; was wieder gebraucht werden könnte, ist nicht angekreuzt.</translation>
    </message>
    <message>
        <source>Rules that can go</source>
        <translation>Entbehrliche Regeln</translation>
    </message>
    <message>
        <source>Tick &amp;All</source>
        <translation>&amp;Alle ankreuzen</translation>
    </message>
    <message>
        <source>Tick &amp;None</source>
        <translation>&amp;Keine ankreuzen</translation>
    </message>
    <message>
        <source>&amp;Clean Up</source>
        <translation>Auf&amp;räumen</translation>
    </message>
    <message>
        <source>There is not enough memory to find them.</source>
        <translation>Der Speicher reicht nicht aus, um sie zu finden.</translation>
    </message>
    <message>
        <source>Looking for rules that can go...</source>
        <translation>Entbehrliche Regeln werden gesucht...</translation>
    </message>
    <message>
        <source>There is nothing to clean up.</source>
        <translation>Es gibt nichts aufzuräumen.</translation>
    </message>
    <message>
        <source>%1 of %2 ticked.</source>
        <translation>%1 von %2 angekreuzt.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ColumnsMenu</name>
    <message>
        <source>Put &amp;First</source>
        <translation>Nach &amp;vorn</translation>
    </message>
    <message>
        <source>&amp;Usual Columns</source>
        <translation>Ü&amp;bliche Spalten</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::EditWatchWindowController</name>
    <message>
        <source>Watch Rule</source>
        <translation>Watch Rule</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ExchangeController</name>
    <message>
        <source>Export All Rules</source>
        <translation>Alle Regeln exportieren</translation>
    </message>
    <message>
        <source>Export Selected Rules</source>
        <translation>Ausgewählte Regeln exportieren</translation>
    </message>
    <message>
        <source>Import Files</source>
        <translation>Import Files</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ExchangeFilePanel</name>
    <message>
        <source>Rules (*.%1)</source>
        <translation>Regeln (*.%1)</translation>
    </message>
    <message>
        <source>There is no file “%1”.</source>
        <translation>Es gibt keine Datei „%1“.</translation>
    </message>
    <message>
        <source>Please choose a file whose name ends in .%1.</source>
        <translation>Bitte wählen Sie eine Datei, deren Name auf .%1 endet.</translation>
    </message>
    <message>
        <source>“%1” cannot be read, or is not UTF-8 text.</source>
        <translation>„%1“ kann nicht gelesen werden oder ist kein UTF-8-Text.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::FileOrFolderPanel</name>
    <message>
        <source>&amp;Name:</source>
        <translation>&amp;Name:</translation>
    </message>
    <message>
        <source>&amp;Choose</source>
        <translation>&amp;Auswählen</translation>
    </message>
    <message>
        <source>There is no “%1”.</source>
        <translation>„%1“ gibt es nicht.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::FootNotices</name>
    <message>
        <source>Dismiss</source>
        <translation>Ausblenden</translation>
    </message>
    <message>
        <source>Dismiss this notice</source>
        <translation>Diesen Hinweis ausblenden</translation>
    </message>
    <message>
        <source>%1 more</source>
        <translation>%1 weitere</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ForesightBar</name>
    <message>
        <source>All rules of the file</source>
        <translation>Alle Regeln der Datei</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::HistoryReader</name>
    <message>
        <source>There is not enough memory to compare these versions.</source>
        <translation>Der Speicher reicht nicht aus, um diese Versionen zu vergleichen.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::HistoryWindow</name>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>%1 compared with version %2: %3</source>
        <translation>%1 im Vergleich mit Version %2: %3</translation>
    </message>
    <message>
        <source>%1, the first: %2</source>
        <translation>%1, die erste: %2</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>The versions are forgotten.</source>
        <translation>Die Versionen wurden vergessen.</translation>
    </message>
    <message>
        <source>Nothing has been changed yet.</source>
        <translation>Es wurde noch nichts geändert.</translation>
    </message>
    <message>
        <source>Comparing…</source>
        <translation>Vergleich läuft…</translation>
    </message>
    <message>
        <source>Nothing differs but the order, or how it is written.</source>
        <translation>Nur die Reihenfolge oder die Schreibweise unterscheidet sich.</translation>
    </message>
    <message>
        <source>1 version</source>
        <translation>1 Version</translation>
    </message>
    <message>
        <source>%1 versions</source>
        <translation>%1 Versionen</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>, searched %1…</source>
        <translation>, %1 durchsucht…</translation>
    </message>
    <message>
        <source>Searching…</source>
        <translation>Suche läuft…</translation>
    </message>
    <message>
        <source>No version matches.</source>
        <translation>Keine Version passt.</translation>
    </message>
    <message>
        <source>Version %1 is in force again.</source>
        <translation>Version %1 ist wieder in Kraft.</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig machen</translation>
    </message>
    <message>
        <source>Export Version %1</source>
        <translation>Version %1 exportieren</translation>
    </message>
    <message>
        <source>This file is the one whose versions these are. “Restore” brings a version back.</source>
        <translation>Dies ist die Datei, deren Versionen hier stehen. „Wiederherstellen“ holt eine Version zurück.</translation>
    </message>
    <message>
        <source>Version %1 can no longer be read.</source>
        <translation>Version %1 kann nicht mehr gelesen werden.</translation>
    </message>
    <message>
        <source>Version %1 was exported to “%2”.</source>
        <translation>Version %1 wurde nach „%2“ exportiert.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ImportProgress</name>
    <message>
        <source>Importing rules…</source>
        <translation>Regeln werden importiert…</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Import</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ImportTableModel</name>
    <message>
        <source>Import</source>
        <translation>Import</translation>
    </message>
    <message>
        <source>all rules ticked</source>
        <translation>alle Regeln angekreuzt</translation>
    </message>
    <message>
        <source>no rule ticked</source>
        <translation>keine Regel angekreuzt</translation>
    </message>
    <message>
        <source>some rules ticked</source>
        <translation>einige Regeln angekreuzt</translation>
    </message>
    <message>
        <source>Tick or untick all rules</source>
        <translation>Alle Regeln ankreuzen oder abwählen</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ImportWindowController</name>
    <message>
        <source>&amp;Tick or Untick</source>
        <translation>A&amp;nkreuzen oder abwählen</translation>
    </message>
    <message>
        <source>Tick or Untick &amp;All</source>
        <translation>A&amp;lle ankreuzen oder abwählen</translation>
    </message>
    <message>
        <source>S&amp;ort By</source>
        <translation>S&amp;ortieren nach</translation>
    </message>
    <message>
        <source>Import Rules</source>
        <translation>Import Rules</translation>
    </message>
    <message>
        <source>Import Rules - %1</source>
        <translation>Import Rules - %1</translation>
    </message>
    <message>
        <source>%1 of %2 rules ticked</source>
        <translation>%1 von %2 Regeln angekreuzt</translation>
    </message>
    <message>
        <source>, %1 already present (in italics)</source>
        <translation>, %1 bereits vorhanden (kursiv)</translation>
    </message>
    <message>
        <source>, %1 with letters beyond ASCII, whose lines the rules file cuts</source>
        <translation>, %1 mit Buchstaben jenseits von ASCII, deren Zeilen die Regeldatei abschneidet</translation>
    </message>
    <message>
        <source>
1 line of the file holds several rules, of which the first alone counts.</source>
        <translation>
1 Zeile der Datei enthält mehrere Regeln, von denen nur die erste zählt.</translation>
    </message>
    <message>
        <source>
%1 lines of the file hold several rules each, of which the first alone counts.</source>
        <translation>
%1 Zeilen der Datei enthalten jeweils mehrere Regeln, von denen nur die erste zählt.</translation>
    </message>
    <message>
        <source>
Rules that have lost text are not ticked.</source>
        <translation>
Regeln, die Text verloren haben, sind nicht angekreuzt.</translation>
    </message>
    <message>
        <source>This file holds no rules.</source>
        <translation>Diese Datei enthält keine Regeln.</translation>
    </message>
    <message>
        <source>Pasted Text</source>
        <translation>Eingefügter Text</translation>
    </message>
    <message>
        <source> (%1 of them not shown, and imported all the same)</source>
        <translation> (%1 davon nicht angezeigt und trotzdem importiert)</translation>
    </message>
    <message>
        <source>No rule is of this kind.</source>
        <translation>Keine Regel ist von dieser Art.</translation>
    </message>
    <message>
        <source>Reading the rules…</source>
        <translation>Die Regeln werden gelesen…</translation>
    </message>
    <message>
        <source>There is not enough memory to read this file.</source>
        <translation>Der Arbeitsspeicher reicht nicht, um diese Datei zu lesen.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::LikeSelection</name>
    <message>
        <source>Same &amp;Class</source>
        <translation>Gleiche &amp;Klasse</translation>
    </message>
    <message>
        <source>Same &amp;Type</source>
        <translation>Gleicher &amp;Typ</translation>
    </message>
    <message>
        <source>Same &amp;State</source>
        <translation>Gleicher &amp;Zustand</translation>
    </message>
    <message>
        <source>Same T&amp;ag</source>
        <translation>Gleicher T&amp;ag</translation>
    </message>
    <message>
        <source>Same &amp;Program</source>
        <translation>Gleiches &amp;Programm</translation>
    </message>
    <message>
        <source>Same P&amp;roblem</source>
        <translation>Gleiches P&amp;roblem</translation>
    </message>
    <message>
        <source>The selected rules have no problem.</source>
        <translation>Die ausgewählten Regeln haben kein Problem.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::LoadingWindow</name>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::MapWindow</name>
    <message>
        <source>Looking at the rules…</source>
        <translation>Regeln werden gelesen…</translation>
    </message>
    <message>
        <source>There are no rules.</source>
        <translation>Es gibt keine Regeln.</translation>
    </message>
    <message>
        <source>On the map: %1.</source>
        <translation>Auf der Karte: %1.</translation>
    </message>
    <message>
        <source>Selected in the table: %1.</source>
        <translation>In der Tabelle ausgewählt: %1.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::MessageWindow</name>
    <message>
        <source>Lock</source>
        <translation>Schloss</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::NarrowBar</name>
    <message>
        <source>%1 more: search for them</source>
        <translation>%1 weitere: bitte suchen</translation>
    </message>
    <message>
        <source>Narrow</source>
        <translation>Eingrenzen</translation>
    </message>
    <message>
        <source>&amp;Class</source>
        <translation>&amp;Klasse</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>T&amp;ype</source>
        <translation>&amp;Typ</translation>
    </message>
    <message>
        <source>S&amp;tate</source>
        <translation>&amp;Zustand</translation>
    </message>
    <message>
        <source>Ta&amp;g</source>
        <translation>Ta&amp;g</translation>
    </message>
    <message>
        <source>&amp;Problem</source>
        <translation>&amp;Problem</translation>
    </message>
    <message>
        <source>All rules</source>
        <translation>Alle Regeln</translation>
    </message>
    <message>
        <source>Pr&amp;ogram</source>
        <translation>Pr&amp;ogramm</translation>
    </message>
    <message>
        <source>Show A&amp;ll</source>
        <translation>A&amp;lle zeigen</translation>
    </message>
    <message>
        <source>Show the rules of each class, type, state, tag, problem and program</source>
        <translation>Die Regeln jeder Klasse, jedes Typs, Zustands, Tags, Problems und Programms zeigen</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Allow</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>Deny</translation>
    </message>
    <message>
        <source>Watch</source>
        <translation>Watch</translation>
    </message>
    <message>
        <source>Prefix</source>
        <translation>Prefix</translation>
    </message>
    <message>
        <source>Path</source>
        <translation>Path</translation>
    </message>
    <message>
        <source>Suffix</source>
        <translation>Suffix</translation>
    </message>
    <message>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>Neither</source>
        <translation>Keins von beiden</translation>
    </message>
    <message>
        <source>No tag</source>
        <translation>Ohne Tag</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::OperationBoxesRow</name>
    <message>
        <source>&amp;Read</source>
        <translation>&amp;Lesen</translation>
    </message>
    <message>
        <source>&amp;Write</source>
        <translation>&amp;Schreiben</translation>
    </message>
    <message>
        <source>Cr&amp;eate</source>
        <translation>&amp;Anlegen</translation>
    </message>
    <message>
        <source>&amp;Mount</source>
        <translation>&amp;Einhängen</translation>
    </message>
    <message>
        <source>E&amp;xecute</source>
        <translation>Aus&amp;führen</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::PathField</name>
    <message>
        <source>Browse…</source>
        <translation>Durchsuchen…</translation>
    </message>
    <message>
        <source>Browse for: %1</source>
        <translation>Auswählen: %1</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::PlaceMenu</name>
    <message>
        <source>This &amp;Machine</source>
        <translation>Diesen &amp;Rechner</translation>
    </message>
    <message>
        <source>A Mounted &amp;Volume...</source>
        <translation>Ein eingehängtes &amp;Volume...</translation>
    </message>
    <message>
        <source>&amp;Somewhere Else</source>
        <translation>&amp;Anderswo</translation>
    </message>
    <message>
        <source>somewhere else</source>
        <translation>anderswo</translation>
    </message>
    <message>
        <source>Volume of the machine that the rules are for</source>
        <translation>Volume des Rechners, für den die Regeln gelten</translation>
    </message>
    <message>
        <source>%1 cannot be used as a volume: %2</source>
        <translation>%1 kann nicht als Volume verwendet werden: %2</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ProblemList</name>
    <message>
        <source>Why?</source>
        <translation>Warum?</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::ProblemsPanel</name>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
    <message>
        <source>Look &amp;Again</source>
        <translation>Noch &amp;einmal suchen</translation>
    </message>
    <message>
        <source>Look at all programs and paths again</source>
        <translation>Alle Programme und Pfade noch einmal ansehen</translation>
    </message>
    <message>
        <source>&amp;Kinds</source>
        <translation>&amp;Arten</translation>
    </message>
    <message>
        <source>Which kinds of problems are shown</source>
        <translation>Welche Arten von Problemen gezeigt werden</translation>
    </message>
    <message>
        <source>No problems.</source>
        <translation>Keine Probleme.</translation>
    </message>
    <message>
        <source>1 problem.</source>
        <translation>1 Problem.</translation>
    </message>
    <message>
        <source>%1 problems.</source>
        <translation>%1 Probleme.</translation>
    </message>
    <message>
        <source>Looking for problems...</source>
        <translation>Probleme werden gesucht...</translation>
    </message>
    <message>
        <source>The problems are not known.</source>
        <translation>Die Probleme sind nicht bekannt.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::RuleCellsModel</name>
    <message>
        <source>sorted ascending</source>
        <translation>aufsteigend sortiert</translation>
    </message>
    <message>
        <source>sorted descending</source>
        <translation>absteigend sortiert</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::RuleStrip</name>
    <message>
        <source>Rule in words</source>
        <translation>Regel in Worten</translation>
    </message>
    <message>
        <source>What the rule says</source>
        <translation>Was die Regel sagt</translation>
    </message>
    <message>
        <source>Details of the rule</source>
        <translation>Einzelheiten der Regel</translation>
    </message>
    <message>
        <source>Problems of the rule</source>
        <translation>Probleme der Regel</translation>
    </message>
    <message>
        <source>Select a rule to read here what it says.</source>
        <translation>Wählen Sie eine Regel aus, um hier zu lesen, was sie sagt.</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>Delete This One</source>
        <translation>Diese löschen</translation>
    </message>
    <message>
        <source>Choose...</source>
        <translation>Wählen...</translation>
    </message>
    <message>
        <source>Edit...</source>
        <translation>Bearbeiten...</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Bind Anew</source>
        <translation>Neu binden</translation>
    </message>
    <message>
        <source>What can be done to all of them:</source>
        <translation>Was mit allen getan werden kann:</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::RulesEditorTableController</name>
    <message>
        <source>Rule</source>
        <translation>Rule</translation>
    </message>
    <message>
        <source>New Rule...</source>
        <translation>New Rule...</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>There is nothing to undo.</source>
        <translation>Es gibt nichts rückgängig zu machen.</translation>
    </message>
    <message>
        <source>There is nothing to redo.</source>
        <translation>Es gibt nichts zu wiederholen.</translation>
    </message>
    <message>
        <source>Settings...</source>
        <translation>Einstellungen...</translation>
    </message>
    <message>
        <source>1 line of the rules file holds several rules, of which the first alone counts.</source>
        <translation>1 Zeile der Regeldatei enthält mehrere Regeln, von denen nur die erste zählt.</translation>
    </message>
    <message>
        <source>%1 lines of the rules file hold several rules each, of which the first alone counts.</source>
        <translation>%1 Zeilen der Regeldatei enthalten jeweils mehrere Regeln, von denen nur die erste zählt.</translation>
    </message>
    <message>
        <source>Review</source>
        <translation>Prüfen</translation>
    </message>
    <message>
        <source>Nothing was written, the last change is not in the rules file: %1</source>
        <translation>Es wurde nichts geschrieben, die letzte Änderung steht nicht in der Regeldatei: %1</translation>
    </message>
    <message>
        <source>Write Now</source>
        <translation>Jetzt schreiben</translation>
    </message>
    <message>
        <source>Take Over Now</source>
        <translation>Jetzt übernehmen</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Anzeigen</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Write Whole Lines</source>
        <translation>Ganze Zeilen schreiben</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig machen</translation>
    </message>
    <message>
        <source>1 unsaved rule was kept.</source>
        <translation>1 nicht gespeicherte Regel wurde aufbewahrt.</translation>
    </message>
    <message>
        <source>%1 unsaved rules were kept.</source>
        <translation>%1 nicht gespeicherte Regeln wurden aufbewahrt.</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Nothing was changed: %1</source>
        <translation>Es wurde nichts geändert: %1</translation>
    </message>
    <message>
        <source>Quorvane Configuration - %1</source>
        <translation>Quorvane Configuration - %1</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Hide System Rules</source>
        <translation>Hide System Rules</translation>
    </message>
    <message>
        <source>Show System Rules</source>
        <translation>Show System Rules</translation>
    </message>
    <message>
        <source>%1 of %2 rules shown</source>
        <translation>%1 von %2 Regeln angezeigt</translation>
    </message>
    <message>
        <source>, 1 system rule hidden</source>
        <translation>, 1 Systemregel ausgeblendet</translation>
    </message>
    <message>
        <source>, %1 system rules hidden</source>
        <translation>, %1 Systemregeln ausgeblendet</translation>
    </message>
    <message>
        <source>There are no rules yet.</source>
        <translation>Es gibt noch keine Regeln.</translation>
    </message>
    <message>
        <source>Only system rules match. “Show System Rules” shows them.</source>
        <translation>Nur Systemregeln passen. „Systemregeln einblenden“ zeigt sie.</translation>
    </message>
    <message>
        <source>No rule matches.</source>
        <translation>Keine Regel passt.</translation>
    </message>
    <message>
        <source>There are no rules in that text.</source>
        <translation>Dieser Text enthält keine Regeln.</translation>
    </message>
    <message>
        <source>Rule in &amp;Words</source>
        <translation>Regel in &amp;Worten</translation>
    </message>
    <message>
        <source>&amp;Problems</source>
        <translation>&amp;Probleme</translation>
    </message>
    <message>
        <source>Rules are for: %1</source>
        <translation>Regeln gelten für: %1</translation>
    </message>
    <message>
        <source>Date</source>
        <translation>Datum</translation>
    </message>
    <message>
        <source>, %1 left out by Narrow</source>
        <translation>, %1 durch Eingrenzen ausgelassen</translation>
    </message>
    <message>
        <source>No rule matches what is chosen under Narrow.</source>
        <translation>Keine Regel entspricht dem, was unter Eingrenzen gewählt ist.</translation>
    </message>
    <message>
        <source>Searching…</source>
        <translation>Suche läuft…</translation>
    </message>
    <message>
        <source>Sorting…</source>
        <translation>Sortieren läuft…</translation>
    </message>
    <message>
        <source>, reading the file…</source>
        <translation>, die Datei wird gelesen…</translation>
    </message>
    <message>
        <source>, writing the file…</source>
        <translation>, die Datei wird geschrieben…</translation>
    </message>
    <message>
        <source>, reading the history…</source>
        <translation>, der Verlauf wird gelesen…</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::SavePanel</name>
    <message>
        <source>No file can be saved as “%1”.</source>
        <translation>Unter „%1“ kann keine Datei gespeichert werden.</translation>
    </message>
    <message>
        <source>“%1” already exists.
Do you want to replace it?</source>
        <translation>„%1“ ist bereits vorhanden.
Möchten Sie die Datei ersetzen?</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::SelectionController</name>
    <message>
        <source>Left out: %1 of the system or of another kind.</source>
        <translation>Ausgelassen: %1 des Systems oder anderer Art.</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Allow</translation>
    </message>
    <message>
        <source>Deny</source>
        <translation>Deny</translation>
    </message>
    <message>
        <source>Bind Anew</source>
        <translation>Neu binden</translation>
    </message>
    <message>
        <source>Bind</source>
        <translation>Binden</translation>
    </message>
    <message>
        <source>Clear Constraint</source>
        <translation>Einschränkung leeren</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Tag</source>
        <translation>Tag</translation>
    </message>
    <message>
        <source>Nothing takes the tags away</source>
        <translation>Ein leeres Feld entfernt die Tags</translation>
    </message>
    <message>
        <source>&amp;Tag</source>
        <translation>&amp;Tag</translation>
    </message>
    <message>
        <source>Change Operations</source>
        <translation>Operationen ändern</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Ändern</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Take away</source>
        <translation>Wegnehmen</translation>
    </message>
    <message>
        <source>Set to</source>
        <translation>Setzen auf</translation>
    </message>
    <message>
        <source>&amp;How</source>
        <translation>&amp;Wie</translation>
    </message>
    <message>
        <source>Operations</source>
        <translation>Operationen</translation>
    </message>
    <message>
        <source>Tick the operations.</source>
        <translation>Kreuzen Sie die Operationen an.</translation>
    </message>
    <message>
        <source>Copy Rules to Another Program</source>
        <translation>Regeln in ein anderes Programm kopieren</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Program</source>
        <translation>Programm</translation>
    </message>
    <message>
        <source>&amp;Program</source>
        <translation>&amp;Programm</translation>
    </message>
    <message>
        <source>Name the program by its whole path.</source>
        <translation>Geben Sie das Programm mit seinem ganzen Pfad an.</translation>
    </message>
    <message>
        <source>The rule names no program that could have moved.</source>
        <translation>Die Regel nennt kein Programm, das verschoben worden sein könnte.</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Present path of the program</source>
        <translation>Jetziger Pfad des Programms</translation>
    </message>
    <message>
        <source>Rules of</source>
        <translation>Regeln von</translation>
    </message>
    <message>
        <source>&amp;Found</source>
        <translation>&amp;Gefunden</translation>
    </message>
    <message>
        <source>Now &amp;at</source>
        <translation>Jetzt &amp;unter</translation>
    </message>
    <message>
        <source>Program Moved</source>
        <translation>Programm verschoben</translation>
    </message>
    <message>
        <source>Move Rules</source>
        <translation>Regeln umziehen</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::SettingsWindow</name>
    <message>
        <source>The settings could not be saved: %1</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden: %1</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::TableNarrowing</name>
    <message>
        <source>Looking…</source>
        <translation>Suche läuft…</translation>
    </message>
    <message>
        <source>Not known</source>
        <translation>Nicht bekannt</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::TouchingWindow</name>
    <message>
        <source>Path</source>
        <translation>Pfad</translation>
    </message>
    <message>
        <source>Program</source>
        <translation>Programm</translation>
    </message>
    <message>
        <source>S&amp;ystem rules</source>
        <translation>S&amp;ystemregeln</translation>
    </message>
    <message>
        <source>Type or choose a path, or drop a file on the window</source>
        <translation>Pfad eintippen, auswählen oder eine Datei auf das Fenster ziehen</translation>
    </message>
    <message>
        <source>Any; or the path of a program</source>
        <translation>Beliebig; oder der Pfad eines Programms</translation>
    </message>
    <message>
        <source>&amp;Path</source>
        <translation>&amp;Pfad</translation>
    </message>
    <message>
        <source>Pro&amp;gram</source>
        <translation>Pro&amp;gramm</translation>
    </message>
    <message>
        <source>Operations</source>
        <translation>Operationen</translation>
    </message>
    <message>
        <source>Searching…</source>
        <translation>Suche läuft…</translation>
    </message>
    <message>
        <source>The rules that are about a path: name one above.</source>
        <translation>Die Regeln, die einen Pfad betreffen: Geben Sie oben einen an.</translation>
    </message>
    <message>
        <source>No rule is about this.</source>
        <translation>Keine Regel betrifft dies.</translation>
    </message>
    <message>
        <source>1 rule.</source>
        <translation>1 Regel.</translation>
    </message>
    <message>
        <source>%1 rules.</source>
        <translation>%1 Regeln.</translation>
    </message>
    <message>
        <source>%1 rules, of which the first %2 are shown.</source>
        <translation>%1 Regeln, von denen die ersten %2 gezeigt werden.</translation>
    </message>
    <message>
        <source>Which of them wins is decided where rules are enforced.</source>
        <translation>Welche von ihnen gewinnt, entscheidet sich dort, wo Regeln durchgesetzt werden.</translation>
    </message>
</context>
<context>
    <name>quorvane::windows::VersionsModel</name>
    <message>
        <source>version %1, of %2</source>
        <translation>Version %1, vom %2</translation>
    </message>
    <message>
        <source>versions %1 to %2, of %3 to %4</source>
        <translation>Versionen %1 bis %2, vom %3 bis %4</translation>
    </message>
    <message>
        <source>another program</source>
        <translation>ein anderes Programm</translation>
    </message>
    <message>
        <source>%1 (can no longer be read)</source>
        <translation>%1 (nicht mehr lesbar)</translation>
    </message>
    <message>
        <source>%1 (not completed yet)</source>
        <translation>%1 (noch nicht abgeschlossen)</translation>
    </message>
    <message>
        <source>%1 (completed later)</source>
        <translation>%1 (später abgeschlossen)</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>What Was Done</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>Program</source>
        <translation>Programm</translation>
    </message>
    <message>
        <source>Added</source>
        <translation>Hinzugefügt</translation>
    </message>
    <message>
        <source>Removed</source>
        <translation>Entfernt</translation>
    </message>
    <message>
        <source>Changed</source>
        <translation>Geändert</translation>
    </message>
</context>
</TS>
