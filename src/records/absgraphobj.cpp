#include <Pardel/absgraphobj.h>

#include "knownvalues_p.h"
#include "streamlists_p.h"

#include <QDataStream>
#include <QIcon>
#include <QStandardItem>

#include <memory>
#include <new>
#include <vector>

namespace {

using Properties = QMap<QString, QVariant>;

void writeValue(QDataStream& stream, const QVariant& value);

// By hand, as Qt's own writer turns the order of the names round from one version to the next.
void writeProperties(QDataStream& stream, const Properties& properties)
{
    stream << static_cast<quint32>(properties.size());
    for (auto property = properties.cend(); property != properties.cbegin();) {
        --property;
        stream << property.key();
        writeValue(stream, property.value());
    }
}

/// As QVariant is written, but for the order of names in maps, however deep in lists and maps they are.
void writeValue(QDataStream& stream, const QVariant& value)
{
    const int type = value.userType();
    if ((type != QMetaType::QVariantMap && type != QMetaType::QVariantList) || stream.version() < QDataStream::Qt_4_0) {
        stream << value; // older streams have other numbers for the types
        return;
    }
    stream << static_cast<quint32>(type);
    if (stream.version() >= QDataStream::Qt_4_2)
        stream << static_cast<qint8>(value.isNull());
    if (type == QMetaType::QVariantMap) {
        writeProperties(stream, value.toMap());
        return;
    }
    const QVariantList elements = value.toList();
    stream << static_cast<quint32>(elements.size());
    for (const QVariant& element : elements)
        writeValue(stream, element);
}

bool readProperties(QDataStream& stream, Properties& properties, ImageRoom& room)
{
    ReadMap read;
    const bool whole = readCounted(stream, [&] {
        QString name;
        QVariant value;
        stream >> name;
        if (readKnownValue(stream, value, room))
            read.insert(name, value);
    });
    properties = read;
    return whole;
}

void writeObject(QDataStream& stream, const AbsGraphObject& object)
{
    stream << object.type << object.identifier << object.text << object.points;
    writeProperties(stream, object.properties);
}

/// @return whether all of it came whole
bool readObject(QDataStream& stream, AbsGraphObject& object, ImageRoom& room)
{
    return readAfresh(stream, [&] { stream >> object.type >> object.identifier >> object.text; }) &&
           readWholeElements(stream, object.points) && readProperties(stream, object.properties, room);
}

} // namespace

const char* const AbsGraphObject::typeNames[] = {
    "Abstract", "Text",      "IconText", "Line",  "Polygone", "Circle",  "Rectangle", "Ellipse",
    "Block",    "PolygoneX", "Group",    "Image", "RichText", "Callout", "BigArrow",
};

AbsGraphObject::AbsGraphObject() = default;

AbsGraphObject::~AbsGraphObject() = default;

void AbsGraphObject::prepareMainItem(QStandardItem* item)
{
    if (!item)
        return;
    item->setData(text, Qt::DisplayRole);
    item->setData(QIcon(), Qt::DecorationRole);
}

int AbsGraphObject::preparePropsTable(QTableView*, int row)
{
    return row;
}

void AbsGraphObject::changeProperty(const QModelIndex&, const QVariant&) {}

void AbsGraphObject::getCoordsMinMax(int&, int&, int&, int&) {}

bool AbsGraphObject::completed()
{
    return false;
}

bool AbsGraphObject::isContains(QList<MapQt::MapPrimitive*>*)
{
    return false;
}

QDataStream& operator<<(QDataStream& stream, BlockGraphObject* block)
{
    if (block->formatVersion == 1 || block->formatVersion == 2)
        block->formatVersion += 2;
    stream << block->formatVersion << block->identifier << block->objectCount << block->x1 << block->y1 << block->x2
           << block->y2 << block->firstColor << block->secondColor << block->displayMode;
    for (qint32 i = 0; i < block->objectCount; ++i)
        writeObject(stream, *block->objects[i]);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, BlockGraphObject* block)
{
    stream >> block->formatVersion >> block->identifier >> block->objectCount >> block->x1 >> block->y1 >> block->x2 >>
        block->y2 >> block->firstColor >> block->secondColor;
    switch (block->formatVersion) {
    case 1: block->displayMode = 3; break;
    case 2: block->displayMode = 0; break;
    case 3:
    case 4: stream >> block->displayMode; break;
    }
    if (block->objectCount < 0)
        throw std::bad_array_new_length();

    // Collected first, so that memory is taken for objects that are there and not for a count.
    std::vector<std::unique_ptr<AbsGraphObject>> objects;
    ImageRoom room;
    // An object that has not come whole is the last: where the next would begin, nothing tells.
    bool whole = true;
    while (whole && !stream.atEnd() && static_cast<qint32>(objects.size()) < block->objectCount) {
        objects.push_back(std::make_unique<AbsGraphObject>());
        whole = readObject(stream, *objects.back(), room);
    }
    block->objectCount = static_cast<qint32>(objects.size());
    block->objects = new AbsGraphObject*[objects.size()];
    for (size_t i = 0; i < objects.size(); ++i)
        block->objects[i] = objects[i].release();
    return stream;
}
