#include "statuspage.h"

#include "commandline.h"
#include "metrics.h"
#include "receiversettings.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>

#include <cstdio>

#include <sys/file.h>

namespace {

/// Whether a process holds the spool.
bool isRunning(const QString& spool)
{
    QFile lock(spool + QLatin1String("/lock"));
    return lock.open(QIODevice::ReadOnly) && ::flock(lock.handle(), LOCK_SH | LOCK_NB) != 0;
}

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
    const bool running = isRunning(settings.reception.spool);
    const auto value = [&values](const char* name) {
        return QLocale(QLocale::English).toString(values.value(name), 'f', 0);
    };
    const auto print = [](const char* name, const QString& text) { std::printf("%-12s%s\n", name, qPrintable(text)); };

    const double written = values.value("written_time_seconds");
    print("receiver", QStringLiteral("%1, started %2; state of %3")
                          .arg(running ? QStringLiteral("running") : QStringLiteral("NOT RUNNING"),
                               timeText(values.value("start_time_seconds")), timeText(written)));
    print("terminals",
          QStringLiteral("%1 connected; %2 connections taken, %3 refused by address, %4 closed for silence, "
                         "%5 for rubbish, %6 of unknown objects, %7 to make room")
              .arg(value("connections"), value("connections_total{fate=\"accepted\"}"),
                   QLocale(QLocale::English)
                       .toString(values.value("connections_total{fate=\"refused_for_address\"}") +
                                     values.value("connections_total{fate=\"refused_per_address\"}"),
                                 'f', 0),
                   value("connections_total{fate=\"closed_for_silence\"}"),
                   value("connections_total{fate=\"closed_for_rubbish\"}"),
                   value("connections_total{fate=\"closed_for_object\"}"),
                   value("connections_total{fate=\"made_room\"}")));
    print("packets", QStringLiteral("%1 good, %2 damaged, %3 rejected, %4 bytes skipped")
                         .arg(value("packets_total{kind=\"good\"}"), value("packets_total{kind=\"damaged\"}"),
                              value("packets_total{kind=\"rejected\"}"), value("skipped_bytes_total")));
    print("reports", QStringLiteral("%1 stored, %2 there already, %3 ahead of time, %4 of unknown objects")
                         .arg(value("reports_stored_total"), value("reports_repeated_total"),
                              value("reports_ahead_total"), value("reports_unknown_total")));
    const bool full = values.value("spool_full") > 0;
    const bool up = values.value("database_up") > 0;
    print("spool", QStringLiteral("%1 bytes, the oldest packet %2 s old%3")
                       .arg(value("spool_bytes"), QString::number(values.value("spool_oldest_seconds"), 'f', 1),
                            full ? QStringLiteral(", CANNOT BE WRITTEN TO") : QString()));
    print("database", up ? QStringLiteral("up") : QStringLiteral("DOWN"));
    if (values.value("commit_seconds_count") > 0) {
        print("stored", QStringLiteral("half of the packets %1 of their arrival, 99 of 100 %2")
                            .arg(waitOf(values, 0.5), waitOf(values, 0.99)));
    }
    return running && up && !full ? Done : Incomplete;
}
