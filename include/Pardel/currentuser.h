#pragma once

#include <QList>
#include <QMap>
#include <QString>

/** One right of a user. What the fields mean belongs to the applications, which fill them. */
struct AccessRightsStructure
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QString name;
    qint32 id = 0;
    qint32 flags = 0;
    /// @}
};

/** The user who has logged in. Applications share it in memory: the order of the members must stay as it is. */
struct CurrentUser
{
    QMap<int, unsigned int> identifiers;       ///< By kind; 1 is the dispatcher's identifier.
    QMap<int, QString> nameParts;              ///< 1 surname, 2 given name, 3 patronymic.
    QList<AccessRightsStructure> accessRights; ///< What the user may do.
};
