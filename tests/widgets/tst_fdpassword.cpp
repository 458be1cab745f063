#include <Pardel/fdpassword.h>

#include "testfiles.h"
#include "widgettext.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTest>

class TestFdPassword : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        const fdPassword dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Login"));
        QCOMPARE(dialog.minimumSize(), QSize(238, 135));
        QCOMPARE(dialog.maximumSize(), QSize(238, 135));
        dialog.messageLabel->setObjectName(QStringLiteral("message"));
        dialog.loginEdit->setObjectName(QStringLiteral("login"));
        dialog.passwordEdit->setObjectName(QStringLiteral("password"));
        QCOMPARE(
            layoutText(dialog.layout()),
            QByteArray("0,1 message hidden, 1,0 QLabel 'Login name', 1,1 login, 2,0 QLabel 'Password', 2,1 password, "
                       "3,1 QPushButton 'Ok'"));
        const auto* ok = dialog.findChild<QPushButton*>();
        QCOMPARE(ok->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(ok->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(ok->layoutDirection(), Qt::RightToLeft);
        QCOMPARE(dialog.layoutDirection(), Qt::LeftToRight);
        QCOMPARE(slotNames(fdPassword::staticMetaObject), QByteArray());
    }

    void message()
    {
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

    void use_data() { addTableRows("fdpassword.txt"); }

    void use()
    {
        fdPassword dialog;
        QString seen;
        connect(&dialog, &QDialog::finished, this, [&](int result) { seen += QString::number(result); });
        dialog.show();
        play(dialog, cell(0));
        const QChar mask(dialog.style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter));
        const QString masked = dialog.passwordEdit->displayText().replace(mask, QLatin1Char('*'));
        for (const QString& text : {dialog.loginEdit->text(), dialog.passwordEdit->text(), masked})
            seen += text.isEmpty() ? QString() : QLatin1Char(' ') + text;
        QCOMPARE(seen.toUtf8(), cell(1));
    }
};

QTEST_MAIN(TestFdPassword)
#include "tst_fdpassword.moc"
