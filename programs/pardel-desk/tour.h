#pragma once

#include <QDir>
#include <QString>

#include <functional>

class DeskSettings;
class DeskWindow;
class LoginFlow;

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

/**
 * Walks through the desk as a user would, from the login to a report, with simulated terminals of its own; checks what
 * is shown, and saves a picture of each step as desk-STEP.png.
 */
class Tour
{
public:
    /** In the end @p objects new ones come from one connection, if that is not 0. */
    Tour(LoginFlow& login, DeskWindow& desk, int terminals, int objects, const QString& folder);

    /** Settings that keep a tour apart from a desk that is at work: any free port. */
    static void adapt(const DeskSettings& settings);

    /** @return whether everything expected was shown; what was not is told on standard error */
    bool run();

private:
    void logIn();
    void showArchive();
    void receive();
    void acknowledge();
    void sortTable();
    void showMap();
    void replayCapture();
    void selectEverywhere();
    void choosePeriod();
    void replay();
    void tellStretches();
    void drawPlot();
    void switchModes();
    void flood();

    int alarms() const;
    void expect(bool shown, const char* what);
    /// Runs the event loop until @p shown, for at most some seconds.
    void await(const std::function<bool()>& shown, const char* what);
    void save(QWidget& widget, const char* step);

    LoginFlow& m_login;
    DeskWindow& m_desk;
    const int m_terminals;
    const int m_objects;
    const QDir m_folder;
    bool m_good = true;
};
