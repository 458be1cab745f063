#pragma once

#include <QString>

/**
 * Has the application speak a language: the desk's texts, the library's and, where they are installed, Qt's own. What
 * is not translated stays English. Before the first widget is made.
 *
 * @param language as "de"; empty for that of the system
 */
void speakLanguage(const QString& language);
