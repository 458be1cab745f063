#include <Pardel/energorecords.h>

#include <QDataStream>
#include <QIODevice>

#include <utility>

QDataStream& operator<<(QDataStream& stream, const ZCounterProperty& property)
{
    return stream << property.id << property.type << property.data1 << property.data2 << property.data3;
}

QDataStream& operator>>(QDataStream& stream, ZCounterProperty& property)
{
    return stream >> property.id >> property.type >> property.data1 >> property.data2 >> property.data3;
}

QDataStream& operator<<(QDataStream& stream, const ZData& data)
{
    return stream << data.id << data.number << data.name << data.type << data.value1 << data.value2 << data.value3
                  << data.value4 << data.value5;
}

QDataStream& operator>>(QDataStream& stream, ZData& data)
{
    return stream >> data.id >> data.number >> data.name >> data.type >> data.value1 >> data.value2 >> data.value3 >>
           data.value4 >> data.value5;
}

QDataStream& operator<<(QDataStream& stream, const ZProp& property)
{
    return stream << property.text1 << property.text2 << property.text3 << property.value1 << property.value2
                  << property.value3 << property.value4 << property.value5;
}

QDataStream& operator>>(QDataStream& stream, ZProp& property)
{
    return stream >> property.text1 >> property.text2 >> property.text3 >> property.value1 >> property.value2 >>
           property.value3 >> property.value4 >> property.value5;
}

QDataStream& operator<<(QDataStream& stream, const ZNebalans_Data& imbalance)
{
    return stream << imbalance.name << imbalance.value1 << imbalance.value2 << imbalance.flag1 << imbalance.flag2
                  << imbalance.flag3;
}

QDataStream& operator>>(QDataStream& stream, ZNebalans_Data& imbalance)
{
    return stream >> imbalance.name >> imbalance.value1 >> imbalance.value2 >> imbalance.flag1 >> imbalance.flag2 >>
           imbalance.flag3;
}

QDataStream& operator<<(QDataStream& stream, const ZRDCCCard& card)
{
    return stream << card.id << card.type << card.data1 << card.data3 << card.data2 << card.data5 << card.data4;
}

QDataStream& operator>>(QDataStream& stream, ZRDCCCard& card)
{
    return stream >> card.id >> card.type >> card.data1 >> card.data3 >> card.data2 >> card.data5 >> card.data4;
}

QDataStream& operator<<(QDataStream& stream, const EnergoObject& object)
{
    return stream << object.id << object.name << object.cards << object.type << object.number << object.status;
}

QDataStream& operator>>(QDataStream& stream, EnergoObject& object)
{
    return stream >> object.id >> object.name >> object.cards >> object.type >> object.number >> object.status;
}

EnergoObject::EnergoObject() {} // NOLINT: the numbers keep what the memory held

QByteArray EnergoObject::data() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_5);
    stream << *this;
    return bytes;
}

QByteArray EnergoObject::data()
{
    return std::as_const(*this).data();
}

void EnergoObject::LoadFromByteArray(QByteArray bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_4_5);
    stream >> *this;
}
