#pragma once

#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/**
 * The folder in which the desk keeps its INI file, database and logs, and the INI file, brought up to date from the
 * template beside the executable.
 */
class DeskSettings
{
public:
    /** @param folder empty: the executable's if it can be written, else the user's for this application's data */
    explicit DeskSettings(const QString& folder);
    ~DeskSettings();

    QSettings& ini() const { return *m_ini; }
    QString folder() const { return m_folder; }
    QString logFolder() const;
    /** What went wrong with the folder or the file, for people; or nothing. */
    QString error() const { return m_error; }

private:
    QString m_folder;
    QString m_error;
    std::unique_ptr<QSettings> m_ini;
};
