#include <QColor>
#include <QFile>
#include <QImage>
#include <QLibrary>
#include <QResource>
#include <QTest>

#include <cmath>

namespace {

/// The ratio of contrast by which WCAG 2 judges: from 1 to 21, at least 3 for graphics.
double contrast(const QColor& one, const QColor& other)
{
    const auto luminance = [](const QColor& color) {
        const auto part = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF()) + 0.05;
    };
    const double ratio = luminance(one) / luminance(other);
    return ratio < 1 ? 1 / ratio : ratio;
}

} // namespace

/// Loads the library itself, as a program that is not linked with it.
class TestImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!QFile::exists(m_path));
        QVERIFY2(m_library.load(), qPrintable(m_library.errorString()));
    }

    void drawings()
    {
        for (const char* name : {"left2", "right2", "clear2"}) {
            const QString path = QStringLiteral(":/pic/pic/%1.png").arg(QLatin1String(name));
            QCOMPARE(QResource(path).compressionAlgorithm(), QResource::NoCompression);
            const QImage image(path, "PNG");
            QCOMPARE(image.size(), QSize(16, 16));
            QVERIFY(image.hasAlphaChannel());
            QCOMPARE(QColor(image.pixelColor(0, 0)).alpha(), 0);
            int drawn = 0;
            for (int i = 0; i < 16 * 16; ++i) {
                const QColor color = image.pixelColor(i % 16, i / 16);
                if (color.alpha() != 255)
                    continue;
                ++drawn;
                QVERIFY2(contrast(color, Qt::white) >= 3 && contrast(color, QColor(32, 32, 32)) >= 3, name);
            }
            QVERIFY(drawn > 30);
        }
        // The wide parts of the arrows' heads.
        const QImage left(QStringLiteral(":/pic/pic/left2.png"));
        const QImage right(QStringLiteral(":/pic/pic/right2.png"));
        QCOMPARE(left.pixelColor(7, 3).alpha() - right.pixelColor(7, 3).alpha(), 255);
        QCOMPARE(right.pixelColor(8, 3).alpha() - left.pixelColor(8, 3).alpha(), 255);
    }

    void takenAwayAndPutBack()
    {
        using Function = int (*)();
        const auto clean = reinterpret_cast<Function>(m_library.resolve("_Z24qCleanupResources_commonv"));
        const auto initialize = reinterpret_cast<Function>(m_library.resolve("_Z21qInitResources_commonv"));
        QVERIFY(clean && initialize);
        QCOMPARE(clean(), 1);
        QVERIFY(!QFile::exists(m_path));
        QCOMPARE(initialize(), 1);
        QVERIFY(QFile::exists(m_path));
    }

    void unloaded()
    {
        QVERIFY(m_library.unload());
        QVERIFY(!QFile::exists(m_path));
    }

private:
    const QString m_path = QStringLiteral(":/pic/pic/left2.png");
    QLibrary m_library{QStringLiteral(LIBRARY)};
};

QTEST_GUILESS_MAIN(TestImages)
#include "tst_images.moc"
