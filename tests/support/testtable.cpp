#include "testtable.h"

#include <QFile>
#include <QTest>

void addTableRows(const char* fileName)
{
    QTest::addColumn<QByteArrayList>("cells");
    QFile table(QLatin1String(TEST_DATA "/") + QLatin1String(fileName));
    QVERIFY2(table.open(QIODevice::ReadOnly), fileName);
    for (QByteArray line = table.readLine(); !line.isEmpty(); line = table.readLine()) {
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
