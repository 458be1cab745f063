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

class Run : public CaptureReader
{
public:
    Run(const ImportOptions& options, const QSqlDatabase& db) : m_writer(db) { m_settings.convert = options.convert; }

    int importAll(const ImportOptions& options);

private:
    void handlePacket(qint64 place, const char* bytes, int size) override;
    void idle() override { m_writer.flush(); } // a live pipe's reports are to be seen
    bool stopped() const override { return m_writer.failed(); }

    DecodeSettings m_settings;
    ArchiveWriter m_writer;
    qint64 m_reports = 0;
    qint64 m_rejected = 0;
};

int Run::importAll(const ImportOptions& options)
{
    QElapsedTimer time;
    time.start();
    readAll(options.files, options.hex);
    m_writer.flush();
    std::fprintf(stderr,
                 "packets %lld, reports %lld, stored %lld, there already %lld, rejected %lld, skipped bytes %lld, "
                 "seconds %.3f\n",
                 packets(), m_reports, m_writer.stored(), m_writer.repeated(), m_rejected, skippedBytes(),
                 static_cast<double>(time.elapsed()) / 1000);
    if (m_writer.failed()) {
        tell(QStringLiteral("cannot store reports: %1 (what is stored stays; run it again to store the rest)")
                 .arg(m_writer.error()));
        return Failed;
    }
    if (hasUnreadable())
        return Failed;
    return m_rejected > 0 || skippedBytes() > 0 ? Incomplete : Done;
}

void Run::handlePacket(qint64 place, const char* bytes, int size)
{
    const DecodedPacket decoded = decodePacket(place, bytes, size, m_settings);
    if (!decoded.accepted()) {
        ++m_rejected;
        return;
    }
    m_writer.add(decoded.report);
    for (const MobData& report : decoded.reports)
        m_writer.add(report);
    m_reports += 1 + decoded.reports.size();
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
    Run run(options, db);
    return run.importAll(options);
}
