#include "importrun.h"

#include "archiveconnection.h"
#include "archiveschema.h"
#include "archivewriter.h"
#include "capturereader.h"
#include "commandline.h"
#include "decodedpacket.h"

#include <QElapsedTimer>
#include <QSqlDatabase>

#include <cstdio>

namespace {

constexpr qint64 longestWait = 500; // ms that a report waits for others to be stored with

class Run : public CaptureReader
{
public:
    Run(const ImportOptions& options, const QSqlDatabase& db) : m_options(options), m_writer(db, {options.ahead}) {}

    int importAll();

private:
    void handlePacket(const PacketFramer::Frame& frame) override;
    void breathe() override;
    bool stopped() const override { return m_writer.failed(); }
    void printSummary(double seconds) const;
    void tellWhatIsLeftToDo();

    const ImportOptions& m_options;
    ArchiveWriter m_writer;
    qint64 m_reports = 0;
    qint64 m_rejected = 0;
    qint64 m_damaged = 0;
    qint64 m_rawRecords = 0;
};

int Run::importAll()
{
    QElapsedTimer time;
    time.start();
    readAll(m_options.files, m_options.form, m_options.decode.checksumFromZero);
    m_writer.flush();
    printSummary(static_cast<double>(time.elapsed()) / 1000);
    tellWhatIsLeftToDo();
    if (m_writer.failed()) {
        tell(QStringLiteral("cannot store reports: %1 (what is stored stays; %2)")
                 .arg(m_writer.error(), m_writer.advice()));
        return Failed;
    }
    if (hasUnreadable())
        return Failed;
    return m_rejected > 0 || m_damaged > 0 || skippedBytes() > 0 || endedEarly() ? Incomplete : Done;
}

/// Of what is stored.
void Run::tellWhatIsLeftToDo()
{
    if (!m_writer.sensorsError().isEmpty())
        tell(
            QStringLiteral("the sensors of new objects are not entered in \"Sensors\": %1 (the reports are stored; the "
                           "next ones of these objects enter them once the table is as \"pardel-archive create\" makes "
                           "it and this user has the rights SELECT and INSERT there)")
                .arg(m_writer.sensorsError()));
    if (!m_writer.failed() && !m_writer.partitionError().isEmpty())
        tell(QStringLiteral(
                 "cannot make the partition %1 (the reports are stored, in the default partition; let the owner "
                 "of archive.master_table run \"pardel-archive partition\")")
                 .arg(m_writer.partitionError()));
}

void Run::handlePacket(const PacketFramer::Frame& frame)
{
    const DecodedPacket decoded = decodePacket(frame, m_options.decode);
    switch (decoded.verdict(m_options.decode)) {
    case Verdict::Damaged: ++m_damaged; return;
    case Verdict::Rejected: ++m_rejected; return;
    case Verdict::RawOnly:
    case Verdict::Good: break;
    }
    m_rawRecords += decoded.rawRecords.size() + decoded.rawExtra.size();
    if (decoded.isLongForm())
        return;
    m_writer.add(decoded.report);
    for (const MobData& report : decoded.reports)
        m_writer.add(report);
    m_reports += 1 + decoded.reports.size();
}

void Run::breathe()
{
    if (m_writer.waitingMilliseconds() >= longestWait)
        m_writer.flush();
}

void Run::printSummary(double seconds) const
{
    std::fprintf(stderr,
                 "packets %lld, reports %lld, stored %lld, there already %lld, rejected %lld, skipped bytes %lld, "
                 "damaged %lld, ahead %lld, raw records %lld, seconds %.3f\n",
                 packets(), m_reports, m_writer.stored(), m_writer.repeated(), m_rejected, skippedBytes(), m_damaged,
                 m_writer.ahead(), m_rawRecords, seconds);
}

} // namespace

int importFiles(const ImportOptions& options)
{
    const ArchiveConnection archive(options.iniFile, options.group);
    if (!archive.error().isEmpty()) {
        tellError(archive.error());
        return Failed;
    }
    if (!archive.file().isEmpty())
        std::fprintf(stderr, "the archive lies in %s\n", qPrintable(archive.file()));
    QSqlDatabase db = archive.database();
    if (options.create) {
        const QString error = ArchiveSchema::create(db);
        if (!error.isEmpty()) {
            tellError(QStringLiteral("cannot make the tables: %1").arg(error));
            return Failed;
        }
    }
    const QString missing = ArchiveSchema::check(db);
    if (!missing.isEmpty()) {
        tellError(QStringLiteral("cannot store reports: %1").arg(missing));
        return Failed;
    }
    CaptureReader::endOnSignals();
    return Run(options, db).importAll();
}
