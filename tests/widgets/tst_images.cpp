#include <QFile>
#include <QImage>
#include <QLibrary>
#include <QResource>
#include <QTest>

/// Loads the library itself, as a program that is not linked with it.
class TestImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comeAndGoWithTheLibrary()
    {
        const QString path = QStringLiteral(":/pic/pic/%1.png");
        const auto isThere = [&](const char* name) { return QFile::exists(path.arg(QLatin1String(name))); };
        QVERIFY(!isThere("left2"));
        QLibrary library(QStringLiteral(LIBRARY));
        QVERIFY2(library.load(), qPrintable(library.errorString()));

        // Of the columns that hold the wide part of an arrow's head, which are drawn and which are clear.
        for (const auto& [name, drawn] : {std::pair("left2", "10"), {"right2", "01"}, {"clear2", "00"}}) {
            QCOMPARE(QResource(path.arg(QLatin1String(name))).compressionAlgorithm(), QResource::NoCompression);
            const QImage image(path.arg(QLatin1String(name)), "PNG");
            QCOMPARE(image.size(), QSize(16, 16));
            QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
            const QByteArray seen = QByteArray::number(image.pixelColor(7, 3).alpha() / 255) +
                                    QByteArray::number(image.pixelColor(8, 3).alpha() / 255);
            QCOMPARE(seen, QByteArray(drawn));
        }

        using Function = int (*)();
        const auto clean = reinterpret_cast<Function>(library.resolve("_Z24qCleanupResources_commonv"));
        const auto initialize = reinterpret_cast<Function>(library.resolve("_Z21qInitResources_commonv"));
        if (!clean || !initialize)
            QFAIL("the functions are not exported");
        QVERIFY(clean() == 1 && !isThere("left2"));
        QVERIFY(initialize() == 1 && isThere("left2"));
        QVERIFY(library.unload() && !isThere("left2"));
    }
};

QTEST_GUILESS_MAIN(TestImages)
#include "tst_images.moc"
