#include "archivestatus.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <limits>

namespace {

/// Of a range or a time; null where there is none.
QJsonValue timeValue(qint64 time, bool there = true)
{
    const qint64 end = std::numeric_limits<qint64>::max();
    return there && time < end && time > -end ? QJsonValue(time) : QJsonValue();
}

QJsonObject contentsObject(const Contents& contents)
{
    const bool some = contents.objects > 0;
    return {{QStringLiteral("reports"), contents.reports},
            {QStringLiteral("reportsCounted"), contents.counted},
            {QStringLiteral("objects"), contents.objects},
            {QStringLiteral("oldest"), timeValue(contents.oldest, some)},
            {QStringLiteral("newest"), timeValue(contents.newest, some)}};
}

/// "months", "withoutTime" and "farFuture", whether they hold something or not.
void insertSpans(const Part& part, QJsonObject* object)
{
    QJsonArray months;
    object->insert(QStringLiteral("withoutTime"), contentsObject(Contents()));
    object->insert(QStringLiteral("farFuture"), contentsObject(Contents()));
    for (const Span& span : part.spans) {
        QJsonObject contents = contentsObject(span.contents);
        if (span.kind == Span::Month) {
            contents.insert(QStringLiteral("month"), monthText(span.month));
            months += contents;
        } else {
            object->insert(span.kind == Span::WithoutTime ? QStringLiteral("withoutTime") : QStringLiteral("farFuture"),
                           contents);
        }
    }
    object->insert(QStringLiteral("months"), months);
}

QJsonObject partObject(const Part& part)
{
    QJsonObject object = contentsObject(part.contents);
    object.insert(QStringLiteral("table"), part.table);
    object.insert(QStringLiteral("bytes"), part.bytes);
    if (part.kind == Part::Range) {
        object.insert(QStringLiteral("from"), timeValue(part.first));
        object.insert(QStringLiteral("to"), timeValue(part.next));
    } else {
        insertSpans(part, &object);
    }
    return object;
}

/// Of one place: "partitions" and "rest", or what its one table holds.
void insertParts(std::vector<Part>::const_iterator first, std::vector<Part>::const_iterator end, QJsonObject* object)
{
    QJsonArray partitions;
    const bool whole = first->kind == Part::Whole;
    for (; first != end; ++first) {
        if (first->kind == Part::Range)
            partitions += partObject(*first);
        else if (first->kind == Part::Rest)
            object->insert(QStringLiteral("rest"), partObject(*first));
        else
            insertSpans(*first, object);
    }
    if (!whole)
        object->insert(QStringLiteral("partitions"), partitions);
}

} // namespace

QByteArray statusJson(const ArchiveStatus& status)
{
    QJsonObject object = contentsObject(status.months);
    object.insert(QStringLiteral("database"), status.postgres ? QStringLiteral("postgres") : QStringLiteral("sqlite3"));
    object.insert(QStringLiteral("reports"), status.reports);
    object.insert(QStringLiteral("objects"), status.lastStates);
    object.insert(QStringLiteral("bytes"), status.bytes);
    if (!status.postgres) {
        object.insert(QStringLiteral("file"), status.file);
        object.insert(QStringLiteral("freeBytes"), status.freeBytes);
    }
    if (status.parts.front().server.isEmpty()) {
        insertParts(status.parts.begin(), status.parts.end(), &object);
    } else {
        QJsonArray shards;
        for (auto first = status.parts.begin(); first != status.parts.end();) {
            const auto next = std::find_if(first, status.parts.end(),
                                           [&first](const Part& part) { return part.server != first->server; });
            QJsonObject shard{{QStringLiteral("server"), first->server}};
            insertParts(first, next, &shard);
            shards += shard;
            first = next;
        }
        object.insert(QStringLiteral("shards"), shards);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}
