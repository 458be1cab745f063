#pragma once

#include <Pardel/pardel_export.h>

#include <QSettings>
#include <QString>

/** @file
 * Where an application finds its settings, and how they follow their template.
 */

/**
 * The path of the running application's settings file: the executable's directory, "/", the executable's name up to its
 * first dot, and ".ini", or ".ini_def" if @p isTemplate is set: the template from which the working file is brought up
 * to date. /opt/app/bin/monitor.bin.x gives /opt/app/bin/monitor.ini.
 *
 * Needs an application object.
 */
PARDEL_EXPORT QString getIniNameDefault(bool isTemplate);

/**
 * Brings a working settings file up to date from its template: every key that stands directly in a top-level group of
 * @p tmpl and is missing from that group of @p settings is added with the template's value; then @p settings is
 * synchronised.
 *
 * Nothing is removed, and no value that is there is changed, even where it differs from the template's: the working
 * file is the user's. The template's keys outside any group and in groups within groups are not copied. Both keep the
 * group that they had. Both files are read by the application's QSettings, and with QSettings::IniFormat these trust
 * them: one that comes from elsewhere is to be opened in pardelIniFormat(). A template that cannot be read has no
 * groups; errors of writing are in the status of @p settings, which an application looks at before the call too where
 * it wants to tell a file that cannot be read.
 */
PARDEL_EXPORT void rebuildSettingsByTemplate(QSettings& settings, QSettings& tmpl);

/**
 * INI files that programs of Qt 5 and of Qt 6 share: as QSettings::IniFormat, but for the characters beyond ASCII.
 *
 * @code
 * QSettings settings(getIniNameDefault(false), pardelIniFormat());
 * @endcode
 *
 * QSettings::IniFormat of Qt 5 takes a file for Latin-1, that of Qt 6 for UTF-8; each garbles what the other takes for
 * text, and Qt 6 loses it when it saves. This format reads the escapes of either ("\xe9" in values, "%U00E9" in keys),
 * and of characters that stand as they are it takes a line for UTF-8 where that is valid, else for Latin-1. It writes
 * escapes only, which both read. U+FDD0, which Unicode keeps free of characters, is read as "@".
 *
 * A line that is neither section nor comment and has no "=" ("# by hand", the marks of a merge) is passed over, as
 * QSettings::IniFormat does, but without an error, and so is a key that QSettings cannot be asked for, such as that of
 * an empty section ("[]"). Like comments they are gone when the file is saved; the values stay. A byte order mark in
 * front of the file counts for nothing.
 *
 * A file that is there and cannot be read counts as empty and gives the status AccessError, or FormatError if it is the
 * temporary file through which this format reads that could not be written. It is never written over: saving gives
 * AccessError until the file on the disk is another.
 *
 * A value that QSettings has kept as a stream ("@Variant(…)", "@DateTime(…)") is read if it is of the types that a
 * schema block's properties may have, images as long as there is the room for them that a block has; any other, a
 * damaged one among them, is as if it were not in the file, and is gone when the file is saved. So no file can take all memory, or the process.
 *
 * All QSettings of a process that have one file open share what the first of them has read, in its format, and each
 * writes it in its own: so open a file in one format only.
 *
 * @return a registered format, the same at every call; QSettings::IniFormat if the process has used up all formats
 */
PARDEL_EXPORT QSettings::Format pardelIniFormat();
