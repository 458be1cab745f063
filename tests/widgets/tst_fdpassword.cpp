#include <Pardel/fdpassword.h>

#include "widgettext.h"

#include <QFile>
#include <QGridLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
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

class TestFdPassword : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        fdPassword dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Login"));
        const auto* grid = qobject_cast<QGridLayout*>(dialog.layout());
        QCOMPARE(layoutText(grid),
                 QByteArray("0,1 QLabel hidden, 1,0 QLabel 'Login name', 1,1 QLineEdit, 2,0 QLabel 'Password', "
                            "2,1 QLineEdit, 3,1 QPushButton 'Ok'"));
        QCOMPARE(grid->itemAtPosition(0, 1)->widget(), dialog.messageLabel);
        QCOMPARE(grid->itemAtPosition(1, 1)->widget(), dialog.loginEdit);
        QCOMPARE(grid->itemAtPosition(2, 1)->widget(), dialog.passwordEdit);
        const QWidget* ok = grid->itemAtPosition(3, 1)->widget();
        QCOMPARE(ok->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(ok->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(ok->layoutDirection(), Qt::RightToLeft);
        QCOMPARE(dialog.layoutDirection(), Qt::LeftToRight);
        QCOMPARE(slotNames(fdPassword::staticMetaObject), QByteArray());

        dialog.resize(600, 400);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCOMPARE(dialog.size(), QSize(238, 135));
        QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
    }

    void message()
    {
        // It takes its own line, and does not push the fields out of the window that cannot grow.
        fdPassword dialog;
        dialog.show();
        const int top = dialog.loginEdit->y();
        dialog.messageLabel->setText(QStringLiteral("There is no user of this name"));
        dialog.layout()->activate();
        QCOMPARE(dialog.loginEdit->y(), top);
        dialog.messageLabel->show();
        dialog.layout()->activate();
        for (const QWidget* widget : dialog.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
            QVERIFY2(dialog.rect().contains(widget->geometry()), widget->metaObject()->className());
        QVERIFY(dialog.messageLabel->geometry().bottom() < dialog.loginEdit->y());
    }

    void typing_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QByteArray>("fields");
        QTest::addColumn<int>("result");
        QTest::newRow("Enter in the password") << QByteArray("anna\tpw 1\r") << QByteArray("anna|pw 1") << 1;
        QTest::newRow("Enter in the login name") << QByteArray("anna\n") << QByteArray("anna|") << 1;
        QTest::newRow("Ok by the space bar") << QByteArray("anna\tpw\t ") << QByteArray("anna|pw") << 1;
        QTest::newRow("Tab goes round") << QByteArray("an\tpw\t\tna\r") << QByteArray("na|pw") << 1;
        QTest::newRow("Escape") << QByteArray("anna\tpw\x1b") << QByteArray("anna|pw") << 0;
    }

    void typing()
    {
        QFETCH(const QByteArray, keys);
        fdPassword dialog;
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const QSignalSpy finished(&dialog, &QDialog::finished);
        type(dialog, keys);
        QCOMPARE(finished.count(), 1);
        QTEST(finished.first().first().toInt(), "result");
        QTEST((dialog.loginEdit->text() + QLatin1Char('|') + dialog.passwordEdit->text()).toUtf8(), "fields");
        QCOMPARE(dialog.passwordEdit->echoMode(), QLineEdit::Password);
        QVERIFY(dialog.passwordEdit->displayText() != dialog.passwordEdit->text() ||
                dialog.passwordEdit->text().isEmpty());
    }

    void closing()
    {
        fdPassword dialog;
        dialog.show();
        const QSignalSpy finished(&dialog, &QDialog::finished);
        dialog.close();
        QCOMPARE(finished.value(0).value(0), QVariant(0));
    }

    void images()
    {
        for (const char* name : {"left2", "right2", "clear2"}) {
            const QString path = QStringLiteral(":/pic/pic/%1.png").arg(QLatin1String(name));
            QFile file(path);
            QVERIFY2(file.open(QIODevice::ReadOnly), name); // without any registration
            QVERIFY(file.readAll().startsWith("\x89PNG"));
            const QImage image(path);
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

    void imagesTakenAway()
    {
        const QString path = QStringLiteral(":/pic/pic/left2.png");
        cleanupImages();
        QVERIFY(!QFile::exists(path));
        initImages();
        QVERIFY(QFile::exists(path));
    }

private:
    void cleanupImages() { Q_CLEANUP_RESOURCE(common); }
    void initImages() { Q_INIT_RESOURCE(common); }
};

QTEST_MAIN(TestFdPassword)
#include "tst_fdpassword.moc"
