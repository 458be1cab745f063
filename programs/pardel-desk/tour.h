#pragma once

#include <QDir>
#include <QPalette>
#include <QSize>
#include <QString>

#include <functional>

class DeskSettings;
class DeskWindow;
class LoginFlow;
class TreeObjCheckable;

QT_BEGIN_NAMESPACE
class QAbstractItemView;
class QImage;
class QModelIndex;
class QWidget;
QT_END_NAMESPACE

/**
 * Walks through the desk as a user would, from the login to a report, with simulated terminals of its own; checks what
 * is shown, that it can be read and reached on the screen that there is, and saves a picture of each step as
 * desk-STEP.png. At a scale above 1 the window is as on a screen of 1920 x 1080 pixels at scale 2.
 */
class Tour
{
public:
    struct Plan
    {
        QString folder; ///< Of the pictures.
        int terminals = 20;
        int objects = 0; ///< In the end so many new ones come from one connection.
        bool isDark = false;
    };

    Tour(LoginFlow& login, DeskWindow& desk, const Plan& plan);

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
    void hearMeanwhile();
    void print();
    void leaveViews();
    void tellStretches();
    void drawPlot();
    void switchModes();
    void flood();

    int alarms() const;
    /// Sends a packet of one object with the time of now.
    void sendOne(int number);
    void expect(bool shown, const char* what);
    /// That nothing visible in a window is cut off, illegible, or outside of it.
    void expectWhole(const QWidget& window, const char* step);
    /// That the keys lead out of a view again, in both directions.
    void expectWayOut(QAbstractItemView& view, const char* what);
    /// Runs the event loop until @p shown, for at most some seconds.
    void await(const std::function<bool()>& shown, const char* what);
    void save(QWidget& widget, const char* step);

    static QModelIndex indexOf(const TreeObjCheckable& tree, int id);
    static QPalette darkPalette();
    /// Of a picture's pixels, in percent.
    static int darkShare(const QImage& picture);

    static constexpr int clickedObject = 4;
    static constexpr int sentSpeed = 185;         // km/h, by sendOne
    static constexpr QSize smallScreen{960, 540}; // 1920 x 1080 at scale 2

    LoginFlow& m_login;
    DeskWindow& m_desk;
    const int m_terminals;
    const int m_objects;
    const bool m_isDark;
    const QDir m_folder;
    bool m_good = true;
};
