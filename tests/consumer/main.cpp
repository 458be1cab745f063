// A stranger to the library's tree: everything through the one header, Qt's keywords as an application pleases.

#include <Pardel/pardel.h>

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>
#include <QSqlDatabase>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    // The name of the driver in Qt 5, with either version and before any call into the library.
    if (!QSqlDatabase::addDatabase("QPSQL7").isValid())
        return 1;

    QByteArray packet = QByteArray::fromHex("a4d50000110d0001024123");
    Append_CRC_CCITT(packet, false);

    MobData report;
    bool statusBit = false;
    TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, false);

    QByteArray bytes;
    QDataStream writer(&bytes, QIODevice::WriteOnly);
    writer << report << SensorInfoX() << New_Sens() << MessageProp() << QList<Setting>() << EnergoObject().cards;
    MobData read;
    QDataStream reader(bytes);
    reader >> read;

    DataPumpNotifyer hub;
    QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &hub, [](MobData& data) { data.speed = 5; });
    hub.OnDataRecieved(read);
    if (read.speed != 5 || AbsGraphObject().preparePropsTable(nullptr, 7) != 7 || Commonclass().Get_DispID() != 0)
        return 1;
    read.speed = report.speed;

    QTextStream(stdout) << getPardelVersion() << " object " << read.idObject << " sensors " << read.sensors.size()
                        << " supply " << GetExternalSupplyValue(0x23) << " " << TUtils().metaObject()->className()
                        << "\n";
    return read.hash() == report.hash() && SensorExist(read, 65) ? 0 : 1;
}
