// Runs a target on each file of the folders that are its arguments, in the place of libFuzzer's own main program.

#include "fuzz.h"

#include <QDir>
#include <QFile>

int main(int argc, char** argv)
{
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        const QDir folder(QFile::decodeName(argv[i]));
        const QStringList names = folder.entryList(QDir::Files);
        for (const QString& name : names) {
            QFile file(folder.filePath(name));
            expect(file.open(QIODevice::ReadOnly), qPrintable(QStringLiteral("can be read: ") + file.fileName()));
            std::printf("%s\n", qPrintable(name)); // flushed if the target ends the program
            std::fflush(stdout);
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                   static_cast<std::size_t>(bytes.size()));
            ++files;
        }
    }
    expect(files > 0, "there is something in the corpus");
    return 0;
}
