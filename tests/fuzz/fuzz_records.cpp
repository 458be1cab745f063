#include "fuzz.h"

#include <Pardel/apprecords.h>
#include <Pardel/energorecords.h>
#include <Pardel/mobdata.h>
#include <Pardel/sensorinfo.h>

#include <QDataStream>
#include <QIODevice>

namespace {

/// Reads a record, writes it, and reads and writes it again.
template <typename T>
void check(QByteArray bytes, int version, QDataStream::ByteOrder order)
{
    QByteArray written[2];
    for (QByteArray& copy : written) {
        T record{};
        QDataStream in(bytes);
        QDataStream out(&copy, QIODevice::WriteOnly);
        for (QDataStream* stream : {&in, &out}) {
            stream->setVersion(version);
            stream->setByteOrder(order);
        }
        in >> record;
        out << record;
        const bool whole = in.status() == QDataStream::Ok;
        expect(whole || &copy == written, "what is written is read");
        expect(!whole || copy.size() <= 8 * bytes.size() + 64, "no more is made of it than it holds");
        bytes = copy;
    }
    expect(written[0] == written[1], "what is read is written the same");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Check = void (*)(QByteArray, int, QDataStream::ByteOrder);
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
    checks[record](bytesOf(data, size), form & 2 ? QDataStream::Qt_5_15 : QDataStream::Qt_4_5,
                   form & 1 ? QDataStream::LittleEndian : QDataStream::BigEndian);
    return 0;
}
