#include "fuzz.h"

#include <Pardel/commonclass.h>
#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <QDateTime>

#include <limits>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes = bytesOf(data, size);

    const QDateTime moment = TUtils::getDateTime(bytes);
    if (moment.isValid())
        expect(TUtils::getDateTime(TUtils::dateTimeToHex(moment)) == moment, "a time survives its six bytes");

    for (const bool convert : {false, true}) {
        unsigned latitude = 1;
        unsigned longitude = 2;
        TUtils::getCoords(bytes, latitude, longitude, convert, true);
        TUtils::getCoords(bytes, latitude, longitude, convert, false);
        const int packed = static_cast<int>(latitude);
        if (packed > 0 && TUtils::ConvertCoordinates(packed) < std::numeric_limits<int>::max())
            expect(TUtils::ConvertCoordinates(-packed) == -TUtils::ConvertCoordinates(packed), "both sides are alike");
    }
    unsigned version = 7;
    expect(TUtils::GetVersion(bytes, version) || version == 7, "without a version none is written");
    GetExternalSupplyValue(static_cast<int>(size == 0 ? 0 : data[0]));

    for (const bool zeroInit : {false, true}) {
        QByteArray sealed = bytes;
        Append_CRC_CCITT(sealed, zeroInit);
        expect(!zeroInit || CRC_CCITT(sealed, true) == 0, "a sealed packet sums up to 0");
    }
    return 0;
}
