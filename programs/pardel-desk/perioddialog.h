#pragma once

#include <QObject>
#include <QTimer>

class DialogObjsFromTo;

QT_BEGIN_NAMESPACE
class QLabel;
class QPushButton;
QT_END_NAMESPACE

/**
 * What the desk adds to the dialog for objects and a period: buttons for usual periods below the dates, shortcuts
 * (Ctrl+F the search), and Ok only while there is an object and a period that will do; the status bar says why not.
 */
class PeriodDialog : public QObject
{
    Q_OBJECT

public:
    /** @param dialog has to outlive this */
    explicit PeriodDialog(DialogObjsFromTo& dialog, QObject* parent = nullptr);

    /** Shows times in the desk's zone from now on. */
    void showZone();
    /** Why Ok is disabled; nothing if it is not. */
    QString complaint() const;
    /** Makes the dialog no larger than its screen. */
    void fitScreen();
    /** Checks at once what a change would have checked a moment later. */
    void check();

private:
    void addPresets();

    DialogObjsFromTo& m_dialog;
    QPushButton* m_ok;
    QLabel* m_zone = nullptr;
    QTimer m_check; // once, when a change of ticks has spread through the tree
    bool m_complains = false;
};
