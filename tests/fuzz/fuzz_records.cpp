#include "fuzz.h"

#include <Pardel/apprecords.h>
#include <Pardel/energorecords.h>
#include <Pardel/mobdata.h>
#include <Pardel/sensorinfo.h>

#include <QDataStream>
#include <QIODevice>

namespace {

struct Form
{
    int version = 0;
    QDataStream::ByteOrder order = QDataStream::BigEndian;

    void apply(QDataStream& stream) const
    {
        stream.setVersion(version);
        stream.setByteOrder(order);
    }
};

template <typename T>
QByteArray written(const T& record, const Form& form)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    form.apply(stream);
    stream << record;
    return bytes;
}

template <typename T>
T read(const QByteArray& bytes, const Form& form, bool& whole)
{
    T record{};
    QDataStream stream(bytes);
    form.apply(stream);
    stream >> record;
    whole = stream.status() == QDataStream::Ok;
    return record;
}

template <typename T>
void check(const QByteArray& bytes, const Form& form)
{
    bool whole = false;
    const QByteArray first = written(read<T>(bytes, form, whole), form);
    expect(!whole || first.size() <= 8 * bytes.size() + 64, "no more is made of it than it holds");
    const QByteArray second = written(read<T>(first, form, whole), form);
    expect(whole && first == second, "what is written is read, and written the same");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Check = void (*)(const QByteArray&, const Form&);
    constexpr Check checks[] = {
        check<MobData>,
        check<Sensor>,
        check<SensorInfo>,
        check<SensorInfoX>,
        check<New_Sens>,
        check<MessageProp>,
        check<DocumentInfo>,
        check<CardsProperty>,
        check<CmdDesc>,
        check<ParamDesc>,
        check<QList<DocumentInfo>>,
        check<QList<Setting>>,
        check<QMap<QString, unsigned int>>,
        check<QList<CardsProperty>>,
        check<ZCounterProperty>,
        check<ZData>,
        check<ZProp>,
        check<ZNebalans_Data>,
        check<ZRDCCCard>,
        check<EnergoObject>,
    };
    const std::size_t record = takeByte(data, size) % std::size(checks);
    const unsigned form = takeByte(data, size);
    checks[record](bytesOf(data, size), {form & 2 ? QDataStream::Qt_5_15 : QDataStream::Qt_4_5,
                                         form & 1 ? QDataStream::LittleEndian : QDataStream::BigEndian});
    return 0;
}
