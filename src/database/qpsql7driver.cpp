#include <QCoreApplication>
#include <QPluginLoader>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlDriverPlugin>

#include <dlfcn.h>

namespace {

/**
 * Makes Qt's own driver for PostgreSQL under the name that Qt 6 no longer has for it.
 *
 * The plug-in is looked for when a connection is made: the application may set Qt's folders of plug-ins until then.
 */
class Qpsql7Creator : public QSqlDriverCreatorBase
{
public:
    QSqlDriver* createObject() const override
    {
        const QStringList folders = QCoreApplication::libraryPaths();
        for (const QString& folder : folders) { // one of them may hold plug-ins for another version of Qt
            QPluginLoader loader(folder + QStringLiteral("/sqldrivers/qsqlpsql"));
            if (auto* plugin = qobject_cast<QSqlDriverPlugin*>(loader.instance()))
                return plugin->create(QStringLiteral("QPSQL"));
        }
        return nullptr;
    }
};

/// From the loading of the library on, so that an application needs no call into it first, to its unloading.
class Registration
{
public:
    Registration()
    {
        QSqlDatabase::registerSqlDriver(QStringLiteral("QPSQL7"), new Qpsql7Creator);
        // That has left an address in Qt's module for the end of the application, at which this library and with it the
        // module may be unloaded: the module is made to stay.
        Dl_info module = {};
        if (dladdr(&QSqlDriver::staticMetaObject, &module) != 0)
            dlopen(module.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    }
    ~Registration() { QSqlDatabase::registerSqlDriver(QStringLiteral("QPSQL7"), nullptr); }
    Q_DISABLE_COPY_MOVE(Registration)
};

// The driver is there from when the library is loaded until it goes.
const Registration registration; // clazy:exclude=non-pod-global-static

} // namespace
