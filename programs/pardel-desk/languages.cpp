#include "languages.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

void speakLanguage(const QString& language)
{
    if (!language.isEmpty())
        QLocale::setDefault(QLocale(language)); // numbers and the first day of the week, too
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    const QString ofQt = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    const QString ofQt = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
    const QString own = QStringLiteral(":/translations");
    // Of one language: a system's list of several may have German behind an English that needs no translation.
    const QLocale locale(QLocale().name());
    const auto load = [&locale](const QString& name, const QString& folder) {
        auto* translator = new QTranslator(QCoreApplication::instance());
        if (translator->load(locale, name, QStringLiteral("_"), folder))
            QCoreApplication::installTranslator(translator);
        else
            delete translator;
    };
    load(QStringLiteral("qtbase"), ofQt);
    load(QStringLiteral("pardel"), own);
    load(QStringLiteral("pardel-desk"), own);
}
