#include <Pardel/fdpassword.h>

#include "testfiles.h"
#include "widgettext.h"

#include <QLabel>
#include <QLineEdit>
#include <QStyle>

class TestFdPassword : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout() { QCOMPARE(layoutLines(fdPassword()), linesOf("fdpassword.layout")); }

    void message()
    {
        fdPassword dialog;
        dialog.messageLabel->setText(QStringLiteral("There is no user of this name"));
        dialog.messageLabel->show();
        dialog.show();
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
        play(dialog, cell("keys"));
        const QChar mask(dialog.style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter));
        const QString masked = dialog.passwordEdit->displayText().replace(mask, QLatin1Char('*'));
        for (const QString& text : {dialog.loginEdit->text(), dialog.passwordEdit->text(), masked})
            seen += text.isEmpty() ? QString() : QLatin1Char(' ') + text;
        QCOMPARE(seen.toUtf8(), cell("outcome"));
    }
};

QTEST_MAIN(TestFdPassword)
#include "tst_fdpassword.moc"
