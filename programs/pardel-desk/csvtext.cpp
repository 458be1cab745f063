#include "csvtext.h"

#include <algorithm>

QString csvLine(const QStringList& fields)
{
    QStringList quoted;
    for (QString field : fields) {
        const bool special = std::any_of(field.cbegin(), field.cend(),
                                         [](QChar character) { return QStringLiteral(",\"\r\n").contains(character); });
        if (special)
            field = QLatin1Char('"') + field.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
        quoted += field;
    }
    return quoted.join(QLatin1Char(',')) + QLatin1String("\r\n");
}
