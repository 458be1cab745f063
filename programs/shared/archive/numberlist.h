#pragma once

#include <QString>

/** Numbers in a statement, however many: one constant, where VALUES would be read number by number. */
namespace NumberList {

/** "1,2,3" */
template <typename Numbers>
QString text(const Numbers& numbers)
{
    QString joined;
    for (const auto number : numbers) {
        if (!joined.isEmpty())
            joined += QLatin1Char(',');
        joined += QString::number(number);
    }
    return joined;
}

/** The table "list" of such a text, with the columns "number" and "place" (from 1). */
inline QString table(const QString& text, bool postgres)
{
    return (postgres ? QStringLiteral("unnest('{%1}'::bigint[]) WITH ORDINALITY AS list (number, place)")
                     : QStringLiteral("(SELECT value AS number, key + 1 AS place FROM json_each('[%1]')) AS list"))
        .arg(text);
}

} // namespace NumberList
