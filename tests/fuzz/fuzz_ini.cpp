#include "fuzz.h"

#include <Pardel/inifiles.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // A name of its own for each input, as QSettings keeps what it has read of a file.
    static const QTemporaryDir folder;
    static int number = 0;
    const QString path = folder.filePath(QString::number(++number));
    QFile file(path);
    expect(file.open(QIODevice::WriteOnly) && file.write(bytesOf(data, size)) >= 0, "the file is written");
    file.close();
    const QString other = path + QStringLiteral(".saved");
    {
        QSettings settings(path, pardelIniFormat());
        QSettings saved(other, pardelIniFormat());
        rebuildSettingsByTemplate(saved, settings);
        const QStringList keys = saved.allKeys();
        saved.sync();
        QFile::copy(other, other + QStringLiteral(".copy"));
        const QSettings copy(other + QStringLiteral(".copy"), pardelIniFormat());
        expect(copy.allKeys().size() == keys.size() || saved.status() != QSettings::NoError, "no key gets lost");
    }
    for (const char* suffix : {"", ".saved", ".saved.copy"})
        QFile::remove(path + QLatin1String(suffix));
    return 0;
}
