#pragma once

#include <Pardel/pardel_export.h>

#include <QDialog>

QT_BEGIN_NAMESPACE
class QLabel;
class QLineEdit;
QT_END_NAMESPACE

/**
 * A dialog of 238 x 135 pixels that asks for a login name and a password.
 *
 * @code
 * fdPassword login;
 * while (login.exec() == QDialog::Accepted && !mayEnter(login.loginEdit->text(), login.passwordEdit->text())) {
 *     login.messageLabel->setText(tr("Unknown user"));
 *     login.messageLabel->show();
 *     login.passwordEdit->clear();
 * }
 * @endcode
 *
 * It only collects the two texts: any are accepted, also empty ones, and they stay in the fields, through later
 * showings too, until the application clears them. Ok and Enter accept; Escape and closing the window reject, and there
 * is no Cancel.
 *
 * The widgets belong to the dialog.
 */
class PARDEL_EXPORT fdPassword : public QDialog
{
    Q_OBJECT

public:
    QLineEdit* loginEdit;    ///< The login name.
    QLineEdit* passwordEdit; ///< The password, shown masked.
    QLabel* messageLabel;    ///< For the application to fill and show: empty and hidden; room for some 12 letters.

    /** A hidden dialog with empty fields, without a parent. */
    fdPassword();
};
