#include "statuspage.h"

#include "commandline.h"
#include "metrics.h"
#include "receiversettings.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>

#include <cstdio>

namespace {

constexpr double longestSilence = 15; // seconds; the metrics are written every 5
constexpr double longestWait = 60;    // seconds for a packet to be stored

/// The least end of a class below which so great a part of all packets lies, for people.
QString waitOf(const QHash<QByteArray, double>& values, double part)
{
    const double all = values.value("commit_seconds_count");
    for (const double end : ReceptionCounters::waits) {
        if (values.value("commit_seconds_bucket{le=\"" + QByteArray::number(end) + "\"}") >= part * all)
            return QStringLiteral("within %1 s").arg(end);
    }
    return QStringLiteral("after more than %1 s").arg(ReceptionCounters::waits.back());
}

QString timeText(double secondsSince1970)
{
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(secondsSince1970 * 1000), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'"));
}

} // namespace

int printStatus(const ReceiverSettings& settings)
{
    QFile file(settings.metrics);
    if (!file.open(QIODevice::ReadOnly)) {
        tellError(QStringLiteral("cannot read %1: %2 (a receiver with these settings writes it while it runs)")
                      .arg(settings.metrics, file.errorString()));
        return Failed;
    }
    const QHash<QByteArray, double> values = readMetrics(file.readAll());
    const double written = values.value("written_time_seconds");
    const double age = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000 - written;
    const bool answers = age < longestSilence;
    const bool running = PacketSpool::isInUse(settings.reception.spool);
    const auto value = [&values](const char* name) {
        return QLocale(QLocale::English).toString(values.value(name), 'f', 0);
    };
    const auto print = [](const char* name, const QString& text) { std::printf("%-12s%s\n", name, qPrintable(text)); };

    const QString state = !running  ? QStringLiteral("NOT RUNNING")
                          : answers ? QStringLiteral("running")
                                    : QStringLiteral("running, but NOT ANSWERING");
    print("receiver", QStringLiteral("%1, started %2; state of %3")
                          .arg(state, timeText(values.value("start_time_seconds")), timeText(written)));
    print("terminals",
          QStringLiteral("%1 connected; %2 connections taken, %3 refused by address, %4 closed for silence, "
                         "%5 for rubbish, %6 of unknown objects, %7 to make room, %8 slowed down")
              .arg(value("connections"), value("connections_accepted_total"),
                   QLocale(QLocale::English)
                       .toString(values.value("connections_refused_total{reason=\"not_allowed\"}") +
                                     values.value("connections_refused_total{reason=\"per_address\"}"),
                                 'f', 0),
                   value("connections_ended_total{fate=\"closed_for_silence\"}"),
                   value("connections_ended_total{fate=\"closed_for_rubbish\"}"),
                   value("connections_ended_total{fate=\"closed_for_object\"}"),
                   value("connections_ended_total{fate=\"made_room\"}"), value("connections_slowed_total")));
    print("packets", QStringLiteral("%1 good, %2 damaged, %3 rejected, %4 bytes skipped")
                         .arg(value("packets_total{kind=\"good\"}"), value("packets_total{kind=\"damaged\"}"),
                              value("packets_total{kind=\"rejected\"}"), value("skipped_bytes_total")));
    print("reports", QStringLiteral("%1 stored, %2 there already, %3 ahead of time, %4 of unknown objects")
                         .arg(value("reports_stored_total"), value("reports_repeated_total"),
                              value("reports_ahead_total"), value("reports_unknown_total")));
    const bool full = values.value("spool_full") > 0;
    const bool waits = values.value("spool_oldest_seconds") > longestWait;
    const bool up = values.value("database_up") > 0;
    print("spool", QStringLiteral("%1 bytes, the oldest packet %2 s old%3")
                       .arg(value("spool_bytes"), QString::number(values.value("spool_oldest_seconds"), 'f', 1),
                            full ? QStringLiteral(", CANNOT BE WRITTEN TO") : QString()));
    print("database", up ? QStringLiteral("up") : QStringLiteral("DOWN"));
    if (values.value("commit_seconds_count") > 0) {
        print("stored", QStringLiteral("half of the packets %1 of their arrival, 99 of 100 %2")
                            .arg(waitOf(values, 0.5), waitOf(values, 0.99)));
    }
    if (const double kept = values.value("spool_kept_files"); kept > 0) {
        print("kept",
              QStringLiteral("%1 files in %2 end with .kept: they could not be read whole (pardel-import stores "
                             "what can be read of them)")
                  .arg(kept)
                  .arg(settings.reception.spool));
    }
    return running && answers && up && !full && !waits ? Done : Incomplete;
}
