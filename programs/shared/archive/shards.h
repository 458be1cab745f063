#pragma once

#include <QMap>
#include <QSqlDatabase>
#include <QString>

#include <vector>

/**
 * The history of an archive that several PostgreSQL servers share: archive.master_table of the first server is
 * partitioned by the hash of id_object, and each partition is a foreign table (postgres_fdw) whose rows lie in
 * archive.master_table of another server, a shard. That one is as on a single server: partitioned by months, with the
 * unique index that the first server's table cannot have. Everything else of the archive lies on the first server.
 */
namespace ArchiveShards {

struct Shard
{
    QString table;   ///< The foreign partition, as SQL takes it, with its schema.
    QString server;  ///< The name of the foreign server; empty where the partition lies on the first server itself.
    QString options; ///< Of the foreign table, as OPTIONS () takes them: where its rows lie.
    int modulus = 1; ///< Its objects are those whose hash leaves this remainder.
    int remainder = 0;

    bool operator==(const Shard& other) const;
};

/**
 * The shards in the order in which all who store take them.
 *
 * @param shards stays as it is when something goes wrong, and becomes empty where archive.master_table is not
 *               partitioned by the hash of id_object
 * @return what went wrong, or nothing
 */
QString read(const QSqlDatabase& db, std::vector<Shard>* shards);

/** Whether these are all and every object belongs to one. @return what is wrong, or nothing */
QString checkComplete(const std::vector<Shard>& shards);

/** The same, and whether each can be reached and has the unique index. */
QString check(const QSqlDatabase& db, const std::vector<Shard>& shards);

/** A condition on a row: whether its object belongs to the shard. */
QString holdsObject(const Shard& shard);

/** The foreign table beside a shard's partition in which check() sees the indexes there. */
QString indexesTable(const QString& table);

/** What a connection to a server takes: host, port, dbname, user, password and so on, as libpq names them. */
using ConnectionOptions = QMap<QString, QString>;

/** Reads "host=a port=5432 dbname=x". @return what is wrong with it, or nothing */
QString parse(const QString& text, ConnectionOptions* options);

} // namespace ArchiveShards

/** A connection to a shard, past the first server; closed with the object. */
class ShardConnection
{
public:
    explicit ShardConnection(const ArchiveShards::ConnectionOptions& options);
    /**
     * As the first server describes its foreign server. How the user is mapped there only the server's owner may see,
     * and a user with a mapping of his own and the right USAGE.
     */
    ShardConnection(const QSqlDatabase& first, const ArchiveShards::Shard& shard);
    ~ShardConnection();
    Q_DISABLE_COPY_MOVE(ShardConnection)

    /** Why it is not open, in one line; empty when it is. */
    QString error() const { return m_error; }
    /** Whether that is because the user may not see how. */
    bool isForbidden() const { return m_forbidden; }
    QSqlDatabase& database() { return m_db; }

private:
    void open(ArchiveShards::ConnectionOptions options);

    QString m_error;
    bool m_forbidden = false;
    QString m_name; // of the connection
    QSqlDatabase m_db;
};
