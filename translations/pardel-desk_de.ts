<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>AlarmList</name>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Object</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>Place</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Speed, km/h</source>
        <translation>Tempo, km/h</translation>
    </message>
    <message>
        <source>Until</source>
        <translation>Bis</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Stand</translation>
    </message>
    <message>
        <source>Remark</source>
        <translation>Bemerkung</translation>
    </message>
    <message>
        <source>still on</source>
        <translation>dauert an</translation>
    </message>
    <message>
        <source>new</source>
        <translation>neu</translation>
    </message>
    <message>
        <source>acknowledged by %1, %2</source>
        <translation>quittiert von %1, %2</translation>
    </message>
</context>
<context>
    <name>AlarmPanel</name>
    <message>
        <source>Ac&amp;knowledge</source>
        <translation>&amp;Quittieren</translation>
    </message>
    <message>
        <source>&amp;Sound</source>
        <translation>&amp;Ton</translation>
    </message>
    <message>
        <source>Alarms</source>
        <translation>Alarme</translation>
    </message>
    <message>
        <source>Remark</source>
        <translation>Bemerkung</translation>
    </message>
    <message>
        <source>New: %1</source>
        <translation>Neu: %1</translation>
    </message>
</context>
<context>
    <name>AlarmStore</name>
    <message>
        <source>Alarms are not shared with other desks: %1</source>
        <translation>Alarme werden nicht mit anderen Pulten geteilt: %1</translation>
    </message>
    <message>
        <source>%1 changes were too many to be kept for later</source>
        <translation>%1 Änderungen waren zu viele, um für später aufgehoben zu werden</translation>
    </message>
</context>
<context>
    <name>CaptureReplay</name>
    <message>
        <source>cannot play %1: that is no file</source>
        <translation>%1 kann nicht abgespielt werden: das ist keine Datei</translation>
    </message>
    <message>
        <source>cannot play %1: %2</source>
        <translation>%1 kann nicht abgespielt werden: %2</translation>
    </message>
    <message>
        <source>playing %1</source>
        <translation>%1 wird abgespielt</translation>
    </message>
    <message>
        <source>stopped</source>
        <translation>angehalten</translation>
    </message>
    <message>
        <source>to its end</source>
        <translation>bis zum Ende</translation>
    </message>
    <message>
        <source>%1 played: %2 (%3 packets, %4 bad checksums, %5 rejected, %6 bytes skipped)</source>
        <translation>%1 abgespielt: %2 (%3 Pakete, %4 falsche Prüfsummen, %5 abgewiesen, %6 Bytes übergangen)</translation>
    </message>
</context>
<context>
    <name>DeskArchive</name>
    <message>
        <source>Truck %1</source>
        <translation>Lkw %1</translation>
    </message>
    <message>
        <source>Van %1</source>
        <translation>Transporter %1</translation>
    </message>
    <message>
        <source>Trucks</source>
        <translation>Lkw</translation>
    </message>
    <message>
        <source>Vans</source>
        <translation>Transporter</translation>
    </message>
    <message>
        <source>Objects</source>
        <translation>Objekte</translation>
    </message>
</context>
<context>
    <name>DeskSettings</name>
    <message>
        <source>%1 cannot be read and was left as it is; it has to be a file that you may read, and %2, for temporary files, a folder with room.</source>
        <translation>%1 kann nicht gelesen werden und blieb, wie es ist; es muss eine Datei sein, die Sie lesen dürfen, und %2, für vorläufige Dateien, ein Ordner mit Platz.</translation>
    </message>
    <message>
        <source>%1 cannot be written to; --data FOLDER keeps settings, database and logs in another folder.</source>
        <translation>In %1 kann nicht geschrieben werden; mit --data ORDNER liegen Einstellungen, Datenbank und Protokolle in einem anderen Ordner.</translation>
    </message>
</context>
<context>
    <name>DeskWindow</name>
    <message>
        <source>Desk</source>
        <translation>Pult</translation>
    </message>
    <message>
        <source>Last states</source>
        <translation>Letzter Stand</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Bericht</translation>
    </message>
    <message>
        <source>Plot</source>
        <translation>Diagramm</translation>
    </message>
    <message>
        <source>Plot saved: %1</source>
        <translation>Diagramm gespeichert: %1</translation>
    </message>
    <message>
        <source>Alarms</source>
        <translation>Alarme</translation>
    </message>
    <message>
        <source>&amp;Desk</source>
        <translation>&amp;Pult</translation>
    </message>
    <message>
        <source>Times in &amp;UTC</source>
        <translation>Zeiten in &amp;UTC</translation>
    </message>
    <message>
        <source>&amp;Filter the objects</source>
        <translation>Objekte &amp;filtern</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Live</source>
        <translation>&amp;Live</translation>
    </message>
    <message>
        <source>Replay a &amp;capture…</source>
        <translation>Auf&amp;zeichnung abspielen…</translation>
    </message>
    <message>
        <source>&amp;Stop the capture</source>
        <translation>Aufzeichnung an&amp;halten</translation>
    </message>
    <message>
        <source>&amp;Reports</source>
        <translation>&amp;Berichte</translation>
    </message>
    <message>
        <source>&amp;Report or replay…</source>
        <translation>&amp;Bericht oder Wiedergabe…</translation>
    </message>
    <message>
        <source>&amp;Play or pause</source>
        <translation>&amp;Abspielen oder anhalten</translation>
    </message>
    <message>
        <source>&amp;End the replay</source>
        <translation>Wiedergabe b&amp;eenden</translation>
    </message>
    <message>
        <source>&amp;Alarms</source>
        <translation>&amp;Alarme</translation>
    </message>
    <message>
        <source>&amp;List of alarms</source>
        <translation>&amp;Liste der Alarme</translation>
    </message>
    <message>
        <source>&amp;Acknowledge the selected</source>
        <translation>Ausgewählten &amp;quittieren</translation>
    </message>
    <message>
        <source>&amp;Map</source>
        <translation>&amp;Karte</translation>
    </message>
    <message>
        <source>Show &amp;all</source>
        <translation>&amp;Alles zeigen</translation>
    </message>
    <message>
        <source>1 : %1</source>
        <translation>1 : %1</translation>
    </message>
    <message>
        <source>Report saved: %1</source>
        <translation>Bericht gespeichert: %1</translation>
    </message>
    <message>
        <source>The map&apos;s tiles come again</source>
        <translation>Die Kacheln der Karte kommen wieder</translation>
    </message>
    <message>
        <source>The map&apos;s tiles do not come: %1</source>
        <translation>Die Kacheln der Karte kommen nicht: %1</translation>
    </message>
    <message>
        <source>Alarm: %1</source>
        <translation>Alarm: %1</translation>
    </message>
    <message>
        <source>Alarms are shared with other desks again</source>
        <translation>Alarme werden wieder mit anderen Pulten geteilt</translation>
    </message>
    <message>
        <source>The replay has ended, to show where %1 is now</source>
        <translation>Die Wiedergabe ist beendet, um zu zeigen, wo %1 jetzt ist</translation>
    </message>
    <message>
        <source>Alarms (%1 new)</source>
        <translation>Alarme (%1 neu)</translation>
    </message>
    <message>
        <source>New alarms: %1</source>
        <translation>Neue Alarme: %1</translation>
    </message>
    <message>
        <source>%1 more messages of new objects and alarms in a second are left out</source>
        <translation>%1 weitere Meldungen einer Sekunde über neue Objekte und Alarme sind ausgelassen</translation>
    </message>
    <message>
        <source>%1 – Desk</source>
        <translation>%1 – Pult</translation>
    </message>
    <message>
        <source>Logged in: %1</source>
        <translation>Angemeldet: %1</translation>
    </message>
    <message>
        <source>Live data come from the archive</source>
        <translation>Live-Daten kommen aus dem Archiv</translation>
    </message>
    <message>
        <source>live from the archive</source>
        <translation>live aus dem Archiv</translation>
    </message>
    <message>
        <source>no live data from the archive</source>
        <translation>keine Live-Daten aus dem Archiv</translation>
    </message>
    <message>
        <source>What terminals send is shown, but not stored: %1</source>
        <translation>Was Terminals senden, wird gezeigt, aber nicht gespeichert: %1</translation>
    </message>
    <message>
        <source>%1:%2  ·  %3 connected  ·  %4 packets, %5 bad</source>
        <translation>%1:%2  ·  %3 verbunden  ·  %4 Pakete, %5 schlechte</translation>
    </message>
    <message>
        <source>The archive cannot be read: %1</source>
        <translation>Das Archiv kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>New terminals</source>
        <translation>Neue Terminals</translation>
    </message>
    <message>
        <source>New object: %1</source>
        <translation>Neues Objekt: %1</translation>
    </message>
    <message>
        <source>Objects and period of the report</source>
        <translation>Objekte und Zeitraum des Berichts</translation>
    </message>
    <message>
        <source>Report of %1 objects</source>
        <translation>Bericht, Objekte: %1</translation>
    </message>
    <message>
        <source>Report of %1 objects, %2 to %3</source>
        <translation>Bericht, Objekte: %1, %2 bis %3</translation>
    </message>
    <message>
        <source>%1: nothing in the archive today</source>
        <translation>%1: heute nichts im Archiv</translation>
    </message>
    <message>
        <source>%1: today&apos;s track</source>
        <translation>%1: Spur von heute</translation>
    </message>
    <message>
        <source>Replay a capture</source>
        <translation>Aufzeichnung abspielen</translation>
    </message>
    <message>
        <source>Times as fast as it was sent</source>
        <translation>Wievielmal so schnell wie gesendet</translation>
    </message>
    <message>
        <source>Making a simulated day…</source>
        <translation>Ein simulierter Tag entsteht…</translation>
    </message>
    <message>
        <source>Password of %1: </source>
        <translation>Kennwort von %1: </translation>
    </message>
    <message>
        <source>Walk through the desk, save pictures of the steps, and end.</source>
        <translation>Durch das Pult gehen, Bilder der Schritte speichern und enden.</translation>
    </message>
    <message>
        <source>Simulated terminals of the tour (default 20).</source>
        <translation>Simulierte Terminals des Rundgangs (sonst 20).</translation>
    </message>
    <message>
        <source>Read a password for this user from standard input, and end.</source>
        <translation>Ein Kennwort dieses Benutzers von der Standardeingabe lesen und enden.</translation>
    </message>
    <message>
        <source>Start of %1</source>
        <translation>Start von %1</translation>
    </message>
    <message>
        <source>Login of %1 refused: %2</source>
        <translation>Anmeldung von %1 abgewiesen: %2</translation>
    </message>
    <message>
        <source>&amp;Objects</source>
        <translation>&amp;Objekte</translation>
    </message>
    <message>
        <source>&amp;Find…</source>
        <translation>&amp;Suchen…</translation>
    </message>
    <message>
        <source>Find &amp;next</source>
        <translation>&amp;Weitersuchen</translation>
    </message>
    <message>
        <source>Find &amp;previous</source>
        <translation>&amp;Rückwärts suchen</translation>
    </message>
    <message>
        <source>%1 online</source>
        <translation>%1 online</translation>
    </message>
    <message>
        <source>%1 silent</source>
        <translation>%1 still</translation>
    </message>
    <message>
        <source>%1 never heard</source>
        <translation>%1 nie gehört</translation>
    </message>
    <message>
        <source>No terminals are let in: %1</source>
        <translation>Terminals werden nicht eingelassen: %1</translation>
    </message>
    <message>
        <source>At least %1 terminals are expected</source>
        <translation>Mindestens %1 Terminals werden erwartet</translation>
    </message>
    <message>
        <source>Further objects of the tour, from one connection (default none, at most 65536).</source>
        <translation>Weitere Objekte des Rundgangs, aus einer Verbindung (sonst keine, höchstens 65536).</translation>
    </message>
    <message>
        <source>A dispatcher&apos;s console. &quot;man pardel-desk&quot; says more.</source>
        <translation>Ein Pult für Disponenten. Mehr sagt „man pardel-desk“.</translation>
    </message>
    <message>
        <source>Keep settings, database and logs there (default: the user&apos;s folders, or the executable&apos;s).</source>
        <translation>Ordner für Einstellungen, Datenbank und Protokolle (sonst die Ordner des Benutzers oder der des Programms).</translation>
    </message>
    <message>
        <source>Settings: %1, data: %2</source>
        <translation>Einstellungen: %1, Daten: %2</translation>
    </message>
    <message>
        <source>Changes of alarms that are not stored: %1. What was raised or acknowledged last is not known to other desks, nor to this one when it is started again</source>
        <translation>Nicht gespeicherte Änderungen an Alarmen: %1. Was zuletzt ausgelöst oder quittiert wurde, wissen andere Plätze nicht, und dieser nach einem neuen Start auch nicht</translation>
    </message>
    <message>
        <source>Take the tour in dark colors.</source>
        <translation>Den Rundgang in dunklen Farben machen.</translation>
    </message>
    <message>
        <source>Reports not shown, as their time cannot be right: %1</source>
        <translation>Nicht gezeigte Meldungen, deren Zeit nicht stimmen kann: %1</translation>
    </message>
    <message>
        <source>%1: reports without a time are not shown</source>
        <translation>%1: Meldungen ohne Zeit werden nicht gezeigt</translation>
    </message>
    <message>
        <source>%1: reports of %2 are not shown, as that is no time of now: look at the clocks of terminal and desk</source>
        <translation>%1: Meldungen von %2 werden nicht gezeigt, da es nicht diese Zeit ist: die Uhren von Terminal und Pult prüfen</translation>
    </message>
    <message>
        <source>The report was cancelled</source>
        <translation>Der Bericht wurde abgebrochen</translation>
    </message>
    <message>
        <source>Reading the archive…</source>
        <translation>Das Archiv wird gelesen…</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>LiveSource</name>
    <message>
        <source>Live/Source=%1 is neither archive nor terminals nor auto; auto is used</source>
        <translation>Live/Source=%1 ist weder archive noch terminals noch auto; auto gilt</translation>
    </message>
</context>
<context>
    <name>LoginFlow</name>
    <message>
        <source>There is no user %1.</source>
        <translation>Einen Benutzer %1 gibt es nicht.</translation>
    </message>
    <message>
        <source>Too many failures: wait %1 s</source>
        <translation>Zu viele Fehlversuche: noch %1 s warten</translation>
    </message>
    <message>
        <source>Enter your name</source>
        <translation>Geben Sie Ihren Namen ein</translation>
    </message>
    <message>
        <source>Caps lock is on</source>
        <translation>Die Feststelltaste ist an</translation>
    </message>
    <message>
        <source>Unknown name or wrong password</source>
        <translation>Name unbekannt oder Kennwort falsch</translation>
    </message>
    <message>
        <source>The database does not answer</source>
        <translation>Die Datenbank antwortet nicht</translation>
    </message>
    <message>
        <source>Unknown name</source>
        <translation>Name unbekannt</translation>
    </message>
    <message>
        <source>Wrong password</source>
        <translation>Kennwort falsch</translation>
    </message>
</context>
<context>
    <name>MapTiles</name>
    <message>
        <source>Tiles=%1 is not used: it lacks %2</source>
        <translation>Tiles=%1 gilt nicht: %2 fehlt</translation>
    </message>
    <message>
        <source>Tiles=%1 is not used: it is no https: or file: address</source>
        <translation>Tiles=%1 gilt nicht: keine Adresse mit https: oder file:</translation>
    </message>
    <message>
        <source>Tiles=%1 is not used: each tile would come from another server</source>
        <translation>Tiles=%1 gilt nicht: jede Kachel käme von einem anderen Server</translation>
    </message>
</context>
<context>
    <name>MapView</name>
    <message>
        <source>%1 km</source>
        <translation>%1 km</translation>
    </message>
    <message>
        <source>%1 m</source>
        <translation>%1 m</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Follows %1</source>
        <translation>Folgt %1</translation>
    </message>
    <message>
        <source>No new tiles: %1</source>
        <translation>Keine neuen Kacheln: %1</translation>
    </message>
    <message>
        <source>%1 km/h, course %2°</source>
        <translation>%1 km/h, Kurs %2°</translation>
    </message>
    <message>
        <source>stands</source>
        <translation>steht</translation>
    </message>
    <message>
        <source>%1: %2, %3, %4%5%6</source>
        <translation>%1: %2, %3, %4%5%6</translation>
    </message>
    <message>
        <source>, alarm</source>
        <translation>, Alarm</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>und %1 weitere</translation>
    </message>
    <message>
        <source>Replay, not now: %1</source>
        <translation>Wiedergabe, nicht jetzt: %1</translation>
    </message>
</context>
<context>
    <name>ObjectMenu</name>
    <message>
        <source>&amp;Centre on it</source>
        <translation>&amp;Zentrieren</translation>
    </message>
    <message>
        <source>&amp;Zoom to it</source>
        <translation>&amp;Heranholen</translation>
    </message>
    <message>
        <source>&amp;Follow it</source>
        <translation>&amp;Verfolgen</translation>
    </message>
    <message>
        <source>&amp;Today&apos;s track</source>
        <translation>Spur von h&amp;eute</translation>
    </message>
    <message>
        <source>&amp;Report…</source>
        <translation>&amp;Bericht…</translation>
    </message>
    <message>
        <source>Copy &amp;position</source>
        <translation>&amp;Position kopieren</translation>
    </message>
    <message>
        <source>&amp;Centre here</source>
        <translation>Hier &amp;zentrieren</translation>
    </message>
    <message>
        <source>Show &amp;all</source>
        <translation>&amp;Alles zeigen</translation>
    </message>
</context>
<context>
    <name>ObjectStates</name>
    <message>
        <source>online</source>
        <translation>online</translation>
    </message>
    <message>
        <source>silent since %1</source>
        <translation>still seit %1</translation>
    </message>
    <message>
        <source>never heard</source>
        <translation>nie gehört</translation>
    </message>
    <message>
        <source>silent %1</source>
        <translation>still %1</translation>
    </message>
    <message>
        <source>new alarm, %1</source>
        <translation>neuer Alarm, %1</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>%1 h</source>
        <translation>%1 h</translation>
    </message>
    <message>
        <source>%1 d</source>
        <translation>%1 d</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>still</translation>
    </message>
</context>
<context>
    <name>ObjectsPanel</name>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Voriger</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Nächster</translation>
    </message>
    <message>
        <source>Matches: %1</source>
        <translation>Treffer: %1</translation>
    </message>
    <message>
        <source>No objects yet</source>
        <translation>Noch keine Objekte</translation>
    </message>
    <message>
        <source>No name contains “%1”</source>
        <translation>Kein Name enthält „%1“</translation>
    </message>
    <message>
        <source>Nothing found</source>
        <translation>Nichts gefunden</translation>
    </message>
    <message>
        <source>new alarms: %1</source>
        <translation>neue Alarme: %1</translation>
    </message>
</context>
<context>
    <name>Period</name>
    <message>
        <source>&amp;Today</source>
        <translation>&amp;Heute</translation>
    </message>
    <message>
        <source>&amp;Yesterday</source>
        <translation>&amp;Gestern</translation>
    </message>
    <message>
        <source>Last &amp;hour</source>
        <translation>Letzte St&amp;unde</translation>
    </message>
    <message>
        <source>Last &amp;24 hours</source>
        <translation>Letzte &amp;24 Stunden</translation>
    </message>
    <message>
        <source>This &amp;week</source>
        <translation>Diese &amp;Woche</translation>
    </message>
    <message>
        <source>The period ends before it begins</source>
        <translation>Der Zeitraum endet, bevor er beginnt</translation>
    </message>
    <message>
        <source>The period has not begun yet</source>
        <translation>Der Zeitraum hat noch nicht begonnen</translation>
    </message>
    <message>
        <source>There is nothing from before 1970</source>
        <translation>Von vor 1970 gibt es nichts</translation>
    </message>
    <message>
        <source>The period is longer than a year</source>
        <translation>Der Zeitraum ist länger als ein Jahr</translation>
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
        <translation>Zeiten in UTC</translation>
    </message>
    <message>
        <source>Local times</source>
        <translation>Ortszeiten</translation>
    </message>
    <message>
        <source>Tick an object</source>
        <translation>Haken Sie ein Objekt an</translation>
    </message>
</context>
<context>
    <name>PlotView</name>
    <message>
        <source>&amp;Object:</source>
        <translation>&amp;Objekt:</translation>
    </message>
    <message>
        <source>&amp;Value:</source>
        <translation>&amp;Wert:</translation>
    </message>
    <message>
        <source>P&amp;icture…</source>
        <translation>B&amp;ild…</translation>
    </message>
    <message>
        <source>The archive cannot be read: %1</source>
        <translation>Das Archiv kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>The first %1 points</source>
        <translation>Die ersten %1 Punkte</translation>
    </message>
    <message>
        <source>No values in this period</source>
        <translation>Keine Werte in diesem Zeitraum</translation>
    </message>
    <message>
        <source>The file %1 cannot be written.</source>
        <translation>Die Datei %1 kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Save the plot</source>
        <translation>Diagramm speichern</translation>
    </message>
    <message>
        <source>plot.png</source>
        <translation>diagramm.png</translation>
    </message>
    <message>
        <source>Pictures (*.png *.jpg *.bmp)</source>
        <translation>Bilder (*.png *.jpg *.bmp)</translation>
    </message>
    <message>
        <source>&amp;All</source>
        <translation>&amp;Alles</translation>
    </message>
    <message>
        <source>The whole period</source>
        <translation>Der ganze Zeitraum</translation>
    </message>
</context>
<context>
    <name>ReportModel</name>
    <message>
        <source>Trip</source>
        <translation>Fahrt</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Halt</translation>
    </message>
    <message>
        <source>No data</source>
        <translation>Keine Daten</translation>
    </message>
    <message>
        <source>Speeding</source>
        <translation>Zu schnell</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>Summary</source>
        <translation>Übersicht</translation>
    </message>
    <message>
        <source>Trips and stops</source>
        <translation>Fahrten und Halte</translation>
    </message>
    <message>
        <source>Alarms</source>
        <translation>Alarme</translation>
    </message>
    <message>
        <source>Object</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>Distance, km</source>
        <translation>Strecke, km</translation>
    </message>
    <message>
        <source>Moving</source>
        <translation>In Fahrt</translation>
    </message>
    <message>
        <source>Stops</source>
        <translation>Halte</translation>
    </message>
    <message>
        <source>Stopped</source>
        <translation>Stand</translation>
    </message>
    <message>
        <source>Top speed, km/h</source>
        <translation>Höchsttempo, km/h</translation>
    </message>
    <message>
        <source>Total</source>
        <translation>Summe</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
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
        <source>Duration</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>Where from</source>
        <translation>Von wo</translation>
    </message>
    <message>
        <source>Where to</source>
        <translation>Wohin</translation>
    </message>
    <message>
        <source>Trips: %1, stops: %2</source>
        <translation>Fahrten: %1, Halte: %2</translation>
    </message>
</context>
<context>
    <name>ReportTable</name>
    <message>
        <source>Re&amp;port:</source>
        <translation>B&amp;ericht:</translation>
    </message>
    <message>
        <source>&amp;CSV…</source>
        <translation>&amp;CSV…</translation>
    </message>
    <message>
        <source>Comma-separated values (*.csv)</source>
        <translation>Kommagetrennte Werte (*.csv)</translation>
    </message>
    <message>
        <source>report.csv</source>
        <translation>bericht.csv</translation>
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
        <translation>bericht.pdf</translation>
    </message>
    <message>
        <source>Pr&amp;int…</source>
        <translation>D&amp;rucken…</translation>
    </message>
    <message>
        <source>Report</source>
        <translation>Bericht</translation>
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
        <source>Zone</source>
        <translation>Zeitzone</translation>
    </message>
    <message>
        <source>Id</source>
        <translation>Nummer</translation>
    </message>
    <message>
        <source>Save the report</source>
        <translation>Bericht speichern</translation>
    </message>
    <message>
        <source>Sa&amp;ve</source>
        <translation>S&amp;ichern</translation>
    </message>
</context>
<context>
    <name>Series</name>
    <message>
        <source>Speed, km/h</source>
        <translation>Tempo, km/h</translation>
    </message>
    <message>
        <source>Supply, V</source>
        <translation>Versorgung, V</translation>
    </message>
    <message>
        <source>Sensor %1</source>
        <translation>Sensor %1</translation>
    </message>
</context>
<context>
    <name>StateTableModel</name>
    <message>
        <source>Object</source>
        <translation>Objekt</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Speed, km/h</source>
        <translation>Tempo, km/h</translation>
    </message>
    <message>
        <source>Course, °</source>
        <translation>Kurs, °</translation>
    </message>
    <message>
        <source>Supply, V</source>
        <translation>Versorgung, V</translation>
    </message>
    <message>
        <source>Alarm</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>alarm</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Stand</translation>
    </message>
    <message>
        <source>Age</source>
        <translation>Alter</translation>
    </message>
    <message>
        <source>new alarm</source>
        <translation>neuer Alarm</translation>
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
        <translation>Tempo</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>Aus&amp;wählen…</translation>
    </message>
    <message>
        <source>Other objects or another period</source>
        <translation>Andere Objekte oder anderer Zeitraum</translation>
    </message>
    <message>
        <source>End the replay</source>
        <translation>Wiedergabe beenden</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
</context>
</TS>
