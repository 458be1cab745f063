#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QTest>

QByteArray contentOf(const QString& path)
{
    QFile file(QDir(QStringLiteral(TEST_DATA)).filePath(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "cannot read " + path.toUtf8();
}

QByteArrayList linesOf(const char* fileName)
{
    return contentOf(QLatin1String(fileName)).trimmed().split('\n');
}

void addTableRows(const char* fileName)
{
    QTest::addColumn<QByteArrayList>("cells");
    for (const QByteArray& line : linesOf(fileName)) {
        if (line.startsWith('#') || line.trimmed().isEmpty())
            continue;
        QByteArrayList cells;
        for (QByteArray text : line.split('|')) {
            text = text.trimmed().replace("\\n", "\n").replace("\\r", "\r").replace("\\t", "\t");
            cells += text.replace("\\0", QByteArray(1, '\0'));
        }
        QTest::newRow(cells.takeFirst()) << cells;
    }
}

QByteArray cell(int index)
{
    QFETCH(const QByteArrayList, cells);
    return cells.value(index);
}
