#include <Pardel/fdpassword.h>

#include "widgettext.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

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
};

QTEST_MAIN(TestFdPassword)
#include "tst_fdpassword.moc"
