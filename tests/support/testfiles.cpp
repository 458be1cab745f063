#include "testfiles.h"

#include <QDir>
#include <QFile>

#include <set>

QByteArray contentOf(const QString& path)
{
    QFile file(QDir(QStringLiteral(TEST_DATA)).filePath(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "cannot read " + path.toUtf8();
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

QByteArrayList linesOf(const char* fileName)
{
    return contentOf(QLatin1String(fileName)).trimmed().split('\n');
}

void addTableRows(const char* fileName)
{
    static std::set<QByteArray> columns; // QtTest keeps the pointers
    QByteArrayList names;
    for (const QByteArray& line : linesOf(fileName)) {
        if (line.startsWith('#') || line.trimmed().isEmpty())
            continue;
        QByteArrayList cells;
        for (QByteArray text : line.split('|')) {
            text = text.trimmed().replace("\\n", "\n").replace("\\r", "\r").replace("\\t", "\t");
            cells += text.replace("\\0", QByteArray(1, '\0'));
        }
        const QByteArray name = cells.takeFirst();
        if (names.isEmpty()) {
            if (name != "name")
                qFatal("the first line of %s does not name the columns", fileName);
            names = cells;
            for (const QByteArray& column : names)
                QTest::addColumn<QByteArray>(columns.insert(column).first->constData());
            continue;
        }
        if (cells.size() > names.size())
            qFatal("%s: \"%s\" has more cells than columns", fileName, name.constData());
        QTestData& row = QTest::newRow(name.constData());
        for (int i = 0; i < names.size(); ++i)
            row << cells.value(i);
    }
}

QByteArray cell(const char* column)
{
    return *static_cast<const QByteArray*>(QTest::qData(column, qMetaTypeId<QByteArray>()));
}
