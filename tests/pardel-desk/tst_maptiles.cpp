// Where tiles come from, which of them a map shows, and how they get on it.

#include "mapprojection.h"
#include "maptiles.h"

#include "testfiles.h"

#include <QPainter>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QtTest>

namespace {

QByteArray picture(const char* color)
{
    QImage image(256, 256, QImage::Format_RGB32);
    image.fill(QColor(QLatin1String(color)));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

/// Answers requests below /first as tileservers.txt has it, others with a red tile.
class TileServer : public QTcpServer
{
public:
    explicit TileServer(const QByteArray& answer)
        : m_identity(contentOf(QStringLiteral("tile-server.pem"))), m_answer(answer)
    {
        listen(QHostAddress::LocalHost);
    }

    QSslCertificate certificate() const { return QSslCertificate(m_identity); }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto* socket = new QSslSocket(this);
        socket->setLocalCertificate(certificate());
        socket->setPrivateKey(QSslKey(m_identity, QSsl::Ec));
        socket->setSocketDescriptor(descriptor);
        connect(socket, &QSslSocket::readyRead, this, [this, socket] {
            while (socket->canReadLine()) {
                const QByteArray line = socket->readLine();
                if (line.startsWith("GET "))
                    socket->write(answerTo(line.split(' ').value(1)));
            }
        });
        socket->startServerEncryption();
    }

private:
    QByteArray answerTo(const QByteArray& path) const
    {
        const bool first = path.startsWith("/first");
        if (first && m_answer == "silence")
            return {};
        const QByteArray body = first && m_answer != "200 OK" ? QByteArray() : picture("red");
        return "HTTP/1.1 " + (first ? QByteArray(m_answer).replace("PATH", path.mid(6)) : "200 OK") +
               "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    const QByteArray m_identity;
    const QByteArray m_answer;
};

} // namespace

class TestMapTiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addresses_data() { addTableRows("tileaddresses.txt"); }

    void addresses()
    {
        TileSettings settings;
        settings.address = QString::fromUtf8(cell("template"));
        QVERIFY(settings.complaint().contains(QString::fromUtf8(cell("complaint"))));
        QCOMPARE(settings.complaint().isEmpty(), cell("complaint").isEmpty());
        QCOMPARE(MapTiles(settings).isOn(), !cell("address").isEmpty());
        if (!cell("address").isEmpty())
            QCOMPARE(settings.url({2, 3, 1}).toString(), QString::fromUtf8(cell("address")));
    }

    void shown_data() { addTableRows("tiles.txt"); }

    void shown()
    {
        const QSizeF size(cell("width").toDouble(), cell("height").toDouble());
        MapProjection map;
        map.resize(size);
        map.centreOn({cell("latitude").toDouble(), cell("longitude").toDouble()});
        map.zoom(cell("scale").toDouble(), QRectF(QPointF(), size).center());
        const int zoom = tileZoom(map.world().width());
        QCOMPARE(zoom, cell("zoom").toInt());
        const QList<TileKey> tiles = tilesOn(QRectF(QPointF(), size), map.world(), zoom);
        QCOMPARE(tiles.size(), cell("count").toInt());
        const QByteArray middle = QByteArray::number(tiles[0].column) + ' ' + QByteArray::number(tiles[0].row);
        QCOMPARE(middle, cell("middle"));
    }

    /// A column of tiles in each color of a flag; of the second zoom only one tile is there, and one is no picture.
    void drawing()
    {
        const QTemporaryDir folder;
        for (const auto& [name, color] :
             {std::pair("1-0-0.png", "red"), {"1-1-0.png", "lime"}, {"1-1-1.png", "blue"}, {"2-1-1.png", "yellow"}})
            writeFile(folder.filePath(QLatin1String(name)), picture(color));
        writeFile(folder.filePath(QStringLiteral("2-2-1.png")), "<html>");
        TileSettings settings = settingsFor(folder);
        settings.address = QUrl::fromLocalFile(folder.path()).toString() + QStringLiteral("/{z}-{x}-{y}.png");
        MapTiles tiles(settings);
        MapProjection map = fourTiles();
        QTRY_COMPARE(drawn(tiles, map), QByteArray("red red lime lime white white blue blue"));
        QVERIFY(tiles.trouble().isEmpty());
        map.zoom(2, {256, 256}); // the middle of the four
        QTRY_COMPARE(drawn(tiles, map), QByteArray("yellow yellow lime lime white white blue blue"));
        QVERIFY(tiles.trouble().isEmpty());
    }

    void servers_data() { addTableRows("tileservers.txt"); }
    void servers()
    {
        TileServer server(cell("answer"));
        const QTemporaryDir folder;
        QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
        trust.setCaCertificates(cell("trusted") == "yes" ? QList<QSslCertificate>{server.certificate()}
                                                         : QList<QSslCertificate>());
        QSslConfiguration::setDefaultConfiguration(trust);
        TileSettings settings = settingsFor(folder);
        settings.answerTime = 500;
        settings.address = QStringLiteral("https://127.0.0.1:%1/first/{z}-{x}-{y}.png").arg(server.serverPort());
        if (cell("answer") == "nobody")
            server.close();
        MapTiles tiles(settings);
        QSignalSpy changes(&tiles, &MapTiles::changed);
        QSignalSpy troubles(&tiles, &MapTiles::troubleChanged);
        QCOMPARE(drawn(tiles, fourTiles()), QByteArray("white white white white white white white white"));
        QTRY_VERIFY(changes.size() >= 4);                   // every tile has come or failed
        QCOMPARE(drawn(tiles, fourTiles()), cell("drawn")); // what has failed is asked for again later
        QVERIFY2(tiles.trouble().contains(QString::fromUtf8(cell("trouble"))), qPrintable(tiles.trouble()));
        QCOMPARE(troubles.size(), cell("trouble").isEmpty() ? 0 : 1);
        QCOMPARE(tiles.trouble().isEmpty(), troubles.isEmpty());
    }

private:
    static TileSettings settingsFor(const QTemporaryDir& folder)
    {
        const QSettings none(folder.filePath(QStringLiteral("none.ini")), QSettings::IniFormat);
        return TileSettings::read(none, folder.path());
    }

    /// A canvas of 512 x 512 with all four tiles of the first zoom.
    static MapProjection fourTiles()
    {
        MapProjection map;
        map.resize({512, 512});
        map.zoom(2, {256, 256});
        return map;
    }

    /// The colors at eight places of such a canvas, row by row, white where there is no tile.
    static QByteArray drawn(MapTiles& tiles, const MapProjection& map)
    {
        QImage canvas(512, 512, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        QPainter painter(&canvas);
        tiles.draw(painter, map, canvas.rect(), Qt::transparent);
        painter.end();
        QByteArray colors;
        for (const int y : {100, 400}) {
            for (const int x : {2, 250, 260, 510}) {
                for (const char* name : {"red", "lime", "blue", "yellow", "white"}) {
                    if (canvas.pixelColor(x, y) == QColor(QLatin1String(name)))
                        colors += name + QByteArray(" ");
                }
            }
        }
        return colors.trimmed();
    }
};

QTEST_MAIN(TestMapTiles)
#include "tst_maptiles.moc"
