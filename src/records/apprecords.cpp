#include <Pardel/apprecords.h>

#include "streamlists_p.h"

#include <QDataStream>

#include <utility>

namespace {

QString readText(QDataStream& stream)
{
    QByteArray utf8;
    stream >> utf8;
    return QString::fromUtf8(utf8.constData(), static_cast<int>(qstrnlen(utf8.constData(), uint(utf8.size()))));
}

} // namespace

QDataStream& operator<<(QDataStream& stream, const DocumentInfo& document)
{
    return stream << document.id << document.name << document.description << document.type << document.status;
}

QDataStream& operator<<(QDataStream& stream, DocumentInfo& document)
{
    return stream << std::as_const(document);
}

QDataStream& operator>>(QDataStream& stream, DocumentInfo& document)
{
    return stream >> document.id >> document.name >> document.description >> document.type >> document.status;
}

QDataStream& operator<<(QDataStream& stream, const CardsProperty& card)
{
    return stream << card.name << card.description << card.type << card.data << card.number << card.id;
}

QDataStream& operator>>(QDataStream& stream, CardsProperty& card)
{
    return stream >> card.name >> card.description >> card.type >> card.data >> card.number >> card.id;
}

QDataStream& operator<<(QDataStream& stream, const CmdDesc& command)
{
    return stream << command.id << command.name << command.type << command.description << command.data << command.flags;
}

QDataStream& operator>>(QDataStream& stream, CmdDesc& command)
{
    return stream >> command.id >> command.name >> command.type >> command.description >> command.data >> command.flags;
}

QDataStream& operator<<(QDataStream& stream, const ParamDesc& parameter)
{
    return stream << parameter.name << parameter.data << parameter.description << parameter.type << parameter.flags;
}

QDataStream& operator>>(QDataStream& stream, ParamDesc& parameter)
{
    return stream >> parameter.name >> parameter.data >> parameter.description >> parameter.type >> parameter.flags;
}

QDataStream& operator<<(QDataStream& stream, const QList<DocumentInfo>& documents)
{
    stream << static_cast<qint32>(documents.size());
    for (const DocumentInfo& document : documents)
        stream << document;
    return stream;
}

QDataStream& operator<<(QDataStream& stream, QList<DocumentInfo>& documents)
{
    return stream << std::as_const(documents);
}

QDataStream& operator>>(QDataStream& stream, QList<DocumentInfo>& documents)
{
    readAnnounced(stream, [&] {
        DocumentInfo document;
        stream >> document;
        documents.append(document);
    });
    return stream;
}

QDataStream& operator<<(QDataStream& stream, const QList<Setting>& settings)
{
    stream << static_cast<qint32>(settings.size());
    for (const Setting& setting : settings)
        stream << setting.name.toUtf8() << setting.value.toUtf8();
    return stream;
}

QDataStream& operator<<(QDataStream& stream, QList<Setting>& settings)
{
    return stream << std::as_const(settings);
}

QDataStream& operator>>(QDataStream& stream, QList<Setting>& settings)
{
    readAnnounced(stream, [&] {
        Setting setting;
        setting.name = readText(stream);
        setting.value = readText(stream);
        settings.append(setting);
    });
    return stream;
}

QDataStream& operator<<(QDataStream& stream, const QMap<QString, unsigned int>& dictionary)
{
    stream << static_cast<qint32>(dictionary.size());
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry)
        stream << entry.key().toUtf8() << entry.value();
    return stream;
}

QDataStream& operator<<(QDataStream& stream, QMap<QString, unsigned int>& dictionary)
{
    return stream << std::as_const(dictionary);
}

QDataStream& operator>>(QDataStream& stream, QMap<QString, unsigned int>& dictionary)
{
    readAnnounced(stream, [&] {
        const QString name = readText(stream);
        quint32 number = 0;
        stream >> number;
        // Names mostly come in ascending order, so that the place at the end is the right one.
        dictionary.insert(dictionary.cend(), name, number);
    });
    return stream;
}

QDataStream& operator>>(QDataStream& stream, QList<CardsProperty>& cards)
{
    readWholeElements(stream, cards);
    return stream;
}
