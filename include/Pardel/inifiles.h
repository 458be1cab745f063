#pragma once

#include <Pardel/pardel_export.h>

#include <QString>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

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
 * Nothing is removed, and no value that is there is changed, even where it differs from the template's. The template's
 * keys outside any group and in groups within groups are not copied. All three are on purpose. Both keep the group that
 * they had. A template that cannot be read has no groups; errors of writing are in the status of @p settings.
 */
PARDEL_EXPORT void rebuildSettingsByTemplate(QSettings& settings, QSettings& tmpl);
