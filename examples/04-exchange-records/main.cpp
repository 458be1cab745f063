// Writes records of an application into a file and reads them back: settings, a dictionary, a schema block.

#include <Pardel/pardel.h>

#include <QDataStream>
#include <QIODevice>
#include <QTemporaryFile>
#include <QTextStream>

namespace {

bool write(QIODevice& device)
{
    const QList<Setting> settings = {{QStringLiteral("map/scale"), QStringLiteral("5000")},
                                     {QStringLiteral("map/language"), QStringLiteral("de")}};
    const QMap<QString, unsigned int> colors = {{QStringLiteral("moving"), 0x00aa00U},
                                                {QStringLiteral("standing"), 0xaa0000U}};

    // The pump of a boiler house, as an application's schema editor would draw it.
    AbsGraphObject pump;
    pump.identifier = 7;
    pump.type = 5;
    pump.text = QStringLiteral("Pump 1");
    pump.points = {{10, 10}, {30, 30}};
    pump.properties = {{QStringLiteral("power"), 7.5}};
    AbsGraphObject* objects[] = {&pump};
    BlockGraphObject block;
    block.formatVersion = 3;
    block.objectCount = 1;
    block.objects = objects;

    QDataStream stream(&device);
    stream.setVersion(QDataStream::Qt_4_5); // writer and reader agree on it
    stream << settings << colors << &block;
    return stream.status() == QDataStream::Ok;
}

bool show(QIODevice& device)
{
    QDataStream stream(&device);
    stream.setVersion(QDataStream::Qt_4_5);
    QList<Setting> settings = {{QStringLiteral("window/title"), QStringLiteral("Schema")}};
    QMap<QString, unsigned int> colors;
    BlockGraphObject block;
    stream >> settings >> colors >> &block; // settings and colors are added to what is there

    QTextStream out(stdout);
    for (const Setting& setting : qAsConst(settings))
        out << setting.name << " = " << setting.value << "\n";
    for (auto color = colors.cbegin(); color != colors.cend(); ++color)
        out << color.key() << ": " << QString::number(color.value(), 16) << "\n";
    for (int i = 0; i < block.objectCount; ++i) {
        const AbsGraphObject* object = block.objects[i];
        out << AbsGraphObject::typeNames[object->type] << " " << object->identifier << " \"" << object->text << "\" of "
            << object->properties.value(QStringLiteral("power")).toDouble() << " kW\n";
        delete object; // what a block reader makes is the caller's
    }
    delete[] block.objects;
    return stream.status() == QDataStream::Ok;
}

} // namespace

int main()
{
    QTemporaryFile file;
    return file.open() && write(file) && file.seek(0) && show(file) ? 0 : 1;
}
