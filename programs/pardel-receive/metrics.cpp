#include "metrics.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocale>

#include <cerrno>
#include <cstdio>

namespace {

const char prefix[] = "pardel_receive_";

/// Writes samples, each kind of them with its explanation.
class Samples
{
public:
    void begin(const char* name, const char* type, const char* help)
    {
        m_name = QByteArray(prefix) + name;
        m_text += "# HELP " + m_name + ' ' + help + "\n# TYPE " + m_name + ' ' + type + '\n';
    }
    void add(double value, const QByteArray& labels = {}, const char* suffix = "")
    {
        m_text += m_name + suffix + (labels.isEmpty() ? QByteArray() : '{' + labels + '}') + ' ' +
                  QByteArray::number(value, 'g', 17) + '\n';
    }
    void one(const char* name, const char* type, const char* help, double value)
    {
        begin(name, type, help);
        add(value);
    }
    QByteArray text() const { return m_text; }

private:
    QByteArray m_name;
    QByteArray m_text;
};

constexpr double seconds(qint64 milliseconds)
{
    return static_cast<double>(milliseconds) / 1000;
}

void addWaits(Samples& samples, const ReceptionCounters& counters)
{
    samples.begin("commit_seconds", "histogram", "From a packet's arrival to the commit of its reports.");
    qint64 sum = 0;
    for (std::size_t i = 0; i < counters.waited.size(); ++i) {
        sum += counters.waited[i];
        const QByteArray end =
            i < ReceptionCounters::waits.size() ? QByteArray::number(ReceptionCounters::waits[i]) : "+Inf";
        samples.add(static_cast<double>(sum), "le=\"" + end + '"', "_bucket");
    }
    samples.add(counters.waitedSeconds, {}, "_sum");
    samples.add(static_cast<double>(sum), {}, "_count");
}

void addConnections(Samples& samples, const TerminalCounters& counters)
{
    samples.one("connections", "gauge", "Open connections.", counters.open);
    samples.one("connections_accepted_total", "counter", "Connections taken.", static_cast<double>(counters.accepted));
    samples.begin("connections_ended_total", "counter", "What became of those that are no longer open.");
    const std::pair<const char*, qint64> fates[] = {
        {"ended", counters.ended},
        {"cut_off", counters.cutOff},
        {"closed_for_rubbish", counters.closedForRubbish},
        {"closed_for_silence", counters.closedForSilence},
        {"closed_for_object", counters.closedForObject},
        {"closed_here", counters.closedHere},
        {"made_room", counters.madeRoom},
    };
    for (const auto& [fate, count] : fates)
        samples.add(static_cast<double>(count), QByteArray("fate=\"") + fate + '"');
    samples.begin("connections_refused_total", "counter", "Connections not taken.");
    samples.add(static_cast<double>(counters.refusedForAddress), "reason=\"not_allowed\"");
    samples.add(static_cast<double>(counters.refusedPerAddress), "reason=\"per_address\"");
    samples.one("connections_slowed_total", "counter", "Connections that sent faster than they are read.",
                static_cast<double>(counters.slowed));
    samples.one("slowed_seconds_total", "counter", "For how long these had to wait, together.",
                seconds(counters.slowedMilliseconds));
}

QString number(double value)
{
    return QLocale(QLocale::English).toString(value, 'f', 0);
}

} // namespace

QByteArray metricsText(const ReceiverState& state)
{
    const DecodeCounts& decoded = state.terminals.decoded;
    const ReceptionCounters& reception = state.reception;
    Samples samples;
    samples.one("start_time_seconds", "gauge", "When the receiver started, since 1970.", seconds(state.started));
    samples.one("written_time_seconds", "gauge", "When this was written, since 1970.", seconds(state.now));
    addConnections(samples, state.terminals);
    samples.begin("packets_total", "counter", "Packets from terminals.");
    samples.add(static_cast<double>(decoded.packets), "kind=\"good\"");
    samples.add(static_cast<double>(decoded.rawOnly), "kind=\"without_checksum\"");
    samples.add(static_cast<double>(decoded.badChecksums), "kind=\"damaged\"");
    samples.add(static_cast<double>(decoded.rejected), "kind=\"rejected\"");
    const auto counter = [&samples](const char* name, const char* help, qint64 value) {
        samples.one(name, "counter", help, static_cast<double>(value));
    };
    counter("skipped_bytes_total", "Bytes in no packet.", decoded.skippedBytes);
    counter("packets_kept_total", "Packets that went into the spool.", reception.received);
    counter("reports_stored_total", "Reports that are in the archive now and were not before.", reception.stored);
    counter("reports_repeated_total", "Reports that were in the archive already.", reception.repeated);
    counter("reports_ahead_total", "Reports stored of a time too far in the future.", reception.ahead);
    counter("reports_unknown_total", "Reports not stored as their object is not let in.", reception.unknown);
    samples.one("spool_bytes", "gauge", "Packets that are not stored yet.", static_cast<double>(reception.spoolBytes));
    samples.one("spool_oldest_seconds", "gauge", "How long the oldest of them has been waiting.",
                reception.spoolSeconds);
    samples.one("spool_kept_files", "gauge", "Files of the spool that could not be read whole and are kept.",
                reception.keptFiles);
    samples.one("spool_full", "gauge", "Whether the spool cannot be written to.", reception.spoolFull ? 1 : 0);
    samples.one("database_up", "gauge", "Whether the database takes reports.", reception.databaseUp ? 1 : 0);
    samples.one("longest_stall_seconds", "gauge", "The longest time for which terminals were not served.",
                seconds(state.longestStall));
    addWaits(samples, reception);
    return samples.text();
}

QString writeMetrics(const QString& file, const QByteArray& text)
{
    QFile made(file + QLatin1String(".new"));
    if (!made.open(QIODevice::WriteOnly | QIODevice::Truncate) || made.write(text) != text.size() || !made.flush()) {
        const QString error = made.errorString();
        made.remove();
        // On a full disk the room of the present text is there: that the disk is full is worth telling.
        QFile present(file);
        const bool isWritten = present.open(QIODevice::ReadWrite | QIODevice::ExistingOnly) && present.write(text) > 0;
        return isWritten && present.flush() && present.resize(text.size()) ? QString() : error;
    }
    made.setPermissions(made.permissions() | QFile::ReadGroup | QFile::ReadOther); // collectors are other users
    made.close();
    // QFile::rename replaces nothing, and QSaveFile waits for the disk.
    if (std::rename(QFile::encodeName(made.fileName()).constData(), QFile::encodeName(file).constData()) != 0)
        return qt_error_string(errno);
    return {};
}

QHash<QByteArray, double> readMetrics(const QByteArray& text)
{
    QHash<QByteArray, double> values;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray& line : lines) {
        const auto space = line.lastIndexOf(' ');
        if (space > 0 && line.startsWith(prefix))
            values.insert(line.left(space).mid(static_cast<int>(sizeof prefix) - 1), line.mid(space + 1).toDouble());
    }
    return values;
}

QString statusLine(const ReceiverState& state, const ReceiverState& before)
{
    const DecodeCounts& decoded = state.terminals.decoded;
    const ReceptionCounters& reception = state.reception;
    const double passed = seconds(std::max<qint64>(state.running - before.running, 1));
    const QString line = QCoreApplication::translate(
        "Metrics",
        "%1 connected; packets %2 (%3 a second), damaged %4, rejected %5, skipped bytes %6; reports stored %7, "
        "there already %8");
    QString text =
        line.arg(number(state.terminals.open), number(static_cast<double>(decoded.packets)),
                 number(static_cast<double>(decoded.packets - before.terminals.decoded.packets) / passed),
                 number(static_cast<double>(decoded.badChecksums)), number(static_cast<double>(decoded.rejected)),
                 number(static_cast<double>(decoded.skippedBytes)), number(static_cast<double>(reception.stored)),
                 number(static_cast<double>(reception.repeated)));
    if (reception.unknown > 0)
        text += QCoreApplication::translate("Metrics", ", of unknown objects %1").arg(reception.unknown);
    text += QCoreApplication::translate("Metrics", "; spool %1 bytes, oldest %2 s; database %3")
                .arg(number(static_cast<double>(reception.spoolBytes)))
                .arg(reception.spoolSeconds, 0, 'f', 1)
                .arg(reception.databaseUp ? QCoreApplication::translate("Metrics", "up")
                                          : QCoreApplication::translate("Metrics", "down"));
    if (reception.keptFiles > 0)
        text += QCoreApplication::translate("Metrics", "; %1 files of the spool could not be read whole and are kept")
                    .arg(reception.keptFiles);
    if (reception.spoolFull)
        text += QCoreApplication::translate("Metrics", "; the spool is full");
    return text;
}
