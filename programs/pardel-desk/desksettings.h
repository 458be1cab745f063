#pragma once

#include <QString>

#include <memory>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/**
 * Where the desk keeps its files, and its INI file, brought up to date from the template.
 *
 * | Kept where                      | when                                                                        |
 * |---------------------------------|-----------------------------------------------------------------------------|
 * | in one folder that is named     | it is                                                                       |
 * | in the executable's folder      | else, if the template is there too, and the folder can be written to        |
 * | in the user's folders for       | else: the desk is installed, or it is not this user's                       |
 * | configuration, data and caches  |                                                                             |
 *
 * The template lies beside the executable, or, of a desk that is installed, among its shared data. An INI file that
 * cannot be read stays as it is.
 */
class DeskSettings
{
public:
    /** @param folder empty: none is named */
    explicit DeskSettings(const QString& folder);
    ~DeskSettings();

    QSettings& ini() const { return *m_ini; }
    /** Of database and spool. */
    QString folder() const { return m_folder; }
    /** Of what can be had again. */
    QString cacheFolder() const { return m_cacheFolder; }
    QString logFolder() const;
    /** What went wrong with folders or file, for people, in the language that is spoken by now; or nothing. */
    QString error() const;

private:
    QString m_folder;
    QString m_cacheFolder;
    QString m_notWritable; // folder or file
    QString m_notReadable;
    std::unique_ptr<QSettings> m_ini;
};
