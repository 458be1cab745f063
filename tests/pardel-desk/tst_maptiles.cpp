// Where tiles come from, which of them a map shows, and how they get on it.

#include "mapprojection.h"
#include "maptiles.h"

#include "testfiles.h"

#include <QBuffer>
#include <QPainter>
#include <QSettings>
#include <QSignalSpy>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/// Answers every request of a path that begins with one of the words of tileservers.txt in that way.
class TileServer : public QTcpServer
{
public:
    TileServer() : m_identity(contentOf(QStringLiteral("tile-server.pem"))) { listen(QHostAddress::LocalHost); }

    QSslCertificate certificate() const { return QSslCertificate(m_identity); }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto* socket = new QSslSocket(this);
        socket->setLocalCertificate(certificate());
        socket->setPrivateKey(QSslKey(m_identity, QSsl::Ec));
        socket->setSocketDescriptor(descriptor);
        connect(socket, &QSslSocket::readyRead, this, [socket] {
            while (socket->canReadLine()) {
                const QByteArray line = socket->readLine();
                if (line.startsWith("GET "))
                    socket->write(answerTo(line.split(' ').value(1)));
            }
        });
        socket->startServerEncryption();
    }

private:
    static QByteArray answerTo(const QByteArray& path)
    {
        const QByteArray end = "\r\nContent-Length: 0\r\n\r\n";
        if (path.startsWith("/moved"))
            return "HTTP/1.1 302 Found\r\nLocation: /tile" + path.mid(6) + end;
        if (path.startsWith("/unsafe"))
            return "HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1/tile" + path.mid(7) + end;
        if (path.startsWith("/missing"))
            return "HTTP/1.1 404 Not Found" + end;
        if (path.startsWith("/failing"))
            return "HTTP/1.1 500 Internal Server Error" + end;
        if (path.startsWith("/silent"))
            return {};
        QImage image(256, 256, QImage::Format_RGB32);
        image.fill(Qt::red);
        QByteArray picture;
        QBuffer buffer(&picture);
        image.save(&buffer, "PNG");
        return "HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: " + QByteArray::number(picture.size()) +
               "\r\n\r\n" + picture;
    }

    const QByteArray m_identity;
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
        const auto store = [&](const char* name, const QColor& color) {
            QImage image(256, 256, QImage::Format_RGB32);
            image.fill(color);
            QVERIFY(image.save(folder.filePath(QLatin1String(name))));
        };
        store("1-0-0.png", Qt::red);
        store("1-1-0.png", Qt::green);
        store("1-1-1.png", Qt::blue);
        store("2-1-1.png", Qt::yellow);
        writeFile(folder.filePath(QStringLiteral("2-2-1.png")), "<html>");
        TileSettings settings = settingsFor(folder);
        settings.address = QUrl::fromLocalFile(folder.path()).toString() + QStringLiteral("/{z}-{x}-{y}.png");
        MapTiles tiles(settings);

        MapProjection map;
        map.resize({512, 512});
        map.zoom(2, {256, 256});
        // Row by row, white where there is no tile.
        QTRY_COMPARE(drawn(tiles, map), QByteArray("red red green green | white white blue blue"));
        QVERIFY(tiles.trouble().isEmpty());
        map.zoom(2, {256, 256}); // the middle of the four
        QTRY_COMPARE(drawn(tiles, map), QByteArray("yellow yellow green green | white white blue blue"));
        QVERIFY(tiles.trouble().isEmpty());
    }

    void servers_data() { addTableRows("tileservers.txt"); }
    void servers()
    {
        TileServer server;
        const QTemporaryDir folder;
        QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
        const QSslConfiguration before = trust;
        trust.setCaCertificates(cell("trusted") == "yes" ? QList<QSslCertificate>{server.certificate()}
                                                         : QList<QSslCertificate>());
        QSslConfiguration::setDefaultConfiguration(trust);
        TileSettings settings = settingsFor(folder);
        settings.answerTime = 500;
        settings.address = QStringLiteral("https://127.0.0.1:%1/%2/{z}-{x}-{y}.png")
                               .arg(server.serverPort())
                               .arg(QString::fromLatin1(cell("answer")));
        MapTiles tiles(settings);
        MapProjection map;
        map.resize({512, 512});
        map.zoom(2, {256, 256});
        QSignalSpy changes(&tiles, &MapTiles::changed);
        drawn(tiles, map);
        QTRY_VERIFY(changes.size() >= 4); // every tile has come or failed
        const QByteArrayList corners = drawn(tiles, map).replace("| ", "").split(' ');
        const QByteArray shown =
            corners.value(0) + ' ' + corners.value(3) + ' ' + corners.value(4) + ' ' + corners.value(7);
        const QString trouble = tiles.trouble();
        QSslConfiguration::setDefaultConfiguration(before);
        QCOMPARE(shown, cell("drawn"));
        QVERIFY2(trouble.contains(QString::fromUtf8(cell("trouble"))), qPrintable(trouble));
        QCOMPARE(trouble.isEmpty(), cell("trouble").isEmpty());
    }

    void nobodyAnswers()
    {
        const QTemporaryDir folder;
        TileSettings settings = settingsFor(folder);
        settings.address = QStringLiteral("https://127.0.0.1:1/{z}/{x}/{y}.png");
        MapTiles tiles(settings);
        QSignalSpy troubles(&tiles, &MapTiles::troubleChanged);
        QSignalSpy changes(&tiles, &MapTiles::changed);
        MapProjection map;
        map.resize({512, 512});
        map.zoom(2, {256, 256});
        QCOMPARE(drawn(tiles, map), QByteArray("white white white white | white white white white"));
        QTRY_COMPARE(changes.size(), 4);
        drawn(tiles, map); // asked for again later
        QVERIFY(!tiles.trouble().isEmpty());
        QCOMPARE(troubles.size(), 1);
    }

private:
    static TileSettings settingsFor(const QTemporaryDir& folder)
    {
        const QSettings none(folder.filePath(QStringLiteral("none.ini")), QSettings::IniFormat);
        return TileSettings::read(none, folder.path());
    }

    /// The colors at eight places of a canvas of 512 x 512.
    static QByteArray drawn(MapTiles& tiles, const MapProjection& map)
    {
        QImage canvas(512, 512, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        QPainter painter(&canvas);
        tiles.draw(painter, map, canvas.rect(), Qt::transparent);
        painter.end();
        QByteArrayList rows;
        for (const int y : {100, 400}) {
            QByteArrayList row;
            for (const int x : {2, 250, 260, 510})
                row.append(nameOf(canvas.pixel(x, y)));
            rows.append(row.join(' '));
        }
        return rows.join(" | ");
    }

    static QByteArray nameOf(QRgb pixel)
    {
        for (const char* name : {"red", "green", "blue", "yellow", "white"}) {
            const QColor color = name == QByteArray("green") ? QColor(Qt::green) : QColor(QLatin1String(name));
            if (color.rgb() == pixel)
                return name;
        }
        return QByteArray::number(pixel, 16);
    }
};

QTEST_MAIN(TestMapTiles)
#include "tst_maptiles.moc"
