#include "copyrows.h"

#include "postgreshandle.h"

#include <QtEndian>

#include <cstring>
#include <memory>

#include <libpq-fe.h>

namespace {

constexpr char header[] = "PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0"; // with no flags, and an extension of no bytes
constexpr int headerSize = 19;
constexpr qint16 noMoreRows = -1;
constexpr qint32 nullSize = -1;

using Result = std::unique_ptr<PGresult, void (*)(PGresult*)>;

Result owned(PGresult* result)
{
    return {result, PQclear};
}

Transaction::Failure failureOf(PGconn* connection, const PGresult* result)
{
    const char* const state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    return {QString::fromUtf8(PQerrorMessage(connection)).simplified(), QString::fromLatin1(state)};
}

} // namespace

CopyRows::CopyRows(int columns) : m_bytes(header, headerSize), m_size(headerSize), m_columns(columns) {}

void CopyRows::beginRow()
{
    const int longest =
        static_cast<int>(sizeof(qint16)) + m_columns * static_cast<int>(sizeof(qint32) + std::tuple_size<Print>::value);
    if (m_bytes.size() - m_size < longest)
        m_bytes.resize(2 * m_bytes.size() + longest);
    qToBigEndian(static_cast<qint16>(m_columns), m_bytes.data() + m_size);
    m_size += static_cast<int>(sizeof(qint16));
}

template <typename Number>
void CopyRows::appendNumber(Number value)
{
    char* const place = m_bytes.data() + m_size;
    qToBigEndian(static_cast<qint32>(sizeof value), place);
    qToBigEndian(value, place + sizeof(qint32));
    m_size += static_cast<int>(sizeof(qint32) + sizeof value);
}

void CopyRows::append(qint16 value)
{
    appendNumber(value);
}

void CopyRows::append(qint32 value)
{
    appendNumber(value);
}

void CopyRows::append(qint64 value)
{
    appendNumber(value);
}

void CopyRows::append(float value)
{
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    appendNumber(bits);
}

void CopyRows::append(const Print& value)
{
    char* const place = m_bytes.data() + m_size;
    qToBigEndian(static_cast<qint32>(value.size()), place);
    std::memcpy(place + sizeof(qint32), value.data(), value.size());
    m_size += static_cast<int>(sizeof(qint32) + value.size());
}

void CopyRows::appendNull()
{
    qToBigEndian(nullSize, m_bytes.data() + m_size);
    m_size += static_cast<int>(sizeof nullSize);
}

Transaction::Failure CopyRows::start(const QSqlDatabase& db, const QByteArray& table, const QByteArray& columns)
{
    PGconn* const connection = postgresHandle(db);
    if (!connection)
        return {QStringLiteral("the connection to PostgreSQL is not open"), QString()};
    const QByteArray statement = "COPY " + table + " (" + columns + ") FROM STDIN (FORMAT binary)";
    const Result begun = owned(PQexec(connection, statement.constData()));
    if (PQresultStatus(begun.get()) != PGRES_COPY_IN)
        return failureOf(connection, begun.get());
    PQsetnonblocking(connection, 1); // else this would wait here until the server has taken nearly all
    char end[sizeof noMoreRows];
    qToBigEndian(noMoreRows, end);
    if (PQputCopyData(connection, m_bytes.constData(), m_size) != 1 ||
        PQputCopyData(connection, end, sizeof end) != 1 || PQputCopyEnd(connection, nullptr) != 1) {
        const QString text = QString::fromUtf8(PQerrorMessage(connection)).simplified();
        finish(db);
        return {text, QString()};
    }
    return {};
}

bool CopyRows::proceed(const QSqlDatabase& db)
{
    PGconn* const connection = postgresHandle(db); // what goes wrong shows at the end
    return !connection || PQflush(connection) < 0 || PQconsumeInput(connection) == 0 || PQisBusy(connection) == 0;
}

Transaction::Failure CopyRows::finish(const QSqlDatabase& db)
{
    PGconn* const connection = postgresHandle(db);
    if (!connection)
        return {QStringLiteral("the connection to PostgreSQL is not open"), QString()};
    Transaction::Failure failure;
    for (Result result = owned(PQgetResult(connection)); result; result = owned(PQgetResult(connection))) {
        if (PQresultStatus(result.get()) != PGRES_COMMAND_OK && !failure)
            failure = failureOf(connection, result.get());
        if (PQresultStatus(result.get()) == PGRES_COPY_IN)
            break; // the connection cannot take the end of the rows any more
    }
    PQsetnonblocking(connection, 0);
    return failure;
}
