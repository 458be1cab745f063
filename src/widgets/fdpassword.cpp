#include <Pardel/fdpassword.h>

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

fdPassword::fdPassword() : loginEdit(new QLineEdit), passwordEdit(new QLineEdit), messageLabel(new QLabel)
{
    setWindowTitle(tr("Login"));
    setFixedSize(238, 135);
    auto* layout = new QGridLayout(this);

    messageLabel->hide();
    layout->addWidget(messageLabel, 0, 1);

    auto* loginLabel = new QLabel(tr("Login name"));
    loginLabel->setBuddy(loginEdit);
    layout->addWidget(loginLabel, 1, 0);
    layout->addWidget(loginEdit, 1, 1);

    auto* passwordLabel = new QLabel(tr("Password"));
    passwordLabel->setBuddy(passwordEdit);
    passwordEdit->setEchoMode(QLineEdit::Password);
    layout->addWidget(passwordLabel, 2, 0);
    layout->addWidget(passwordEdit, 2, 1);

    auto* okButton = new QPushButton(QStringLiteral("Ok")); // the same in every language
    okButton->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    okButton->setLayoutDirection(Qt::RightToLeft);
    connect(okButton, &QPushButton::clicked, this, &fdPassword::accept);
    layout->addWidget(okButton, 3, 1);
}
