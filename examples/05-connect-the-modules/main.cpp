// Modules that do not know each other: one decodes packets and announces the reports, others hear of them.

#include <Pardel/pardel.h>

#include <QTextStream>

namespace {

/// A module that receives packets, here one that is built in.
class Pump : public QObject
{
public:
    explicit Pump(DataPumpNotifyer& hub) : m_hub(hub) {}

    void receive()
    {
        QByteArray packet = QByteArray::fromHex("a4d50000110d0001024123");
        Append_CRC_CCITT(packet, false);
        MobData report;
        bool statusBit = false;
        TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, true);
        m_hub.OnDataRecieved(report); // every receiver sees this very report, and may change it
    }

private:
    DataPumpNotifyer& m_hub;
};

} // namespace

int main()
{
    QTextStream out(stdout);
    DataPumpNotifyer dataHub; // the application makes one of each hub and hands them to its modules
    KernelNotifyer kernelHub;

    // A table of objects: shows each report, and selects the object everywhere.
    QObject::connect(&dataHub, &DataPumpNotifyer::OnDataRecievedSignal, &dataHub, [&](MobData& report) {
        out << "table: object " << report.idObject << ", " << report.sensors.size() << " sensors\n";
        kernelHub.OnSelectIdObject(static_cast<unsigned int>(report.idObject));
    });
    // A map: follows the selection, whoever made it.
    QObject::connect(&kernelHub, &KernelNotifyer::OnSelectIdObjectSignal, &kernelHub,
                     [&](unsigned int id) { out << "map: centred on object " << id << "\n"; });

    Pump(dataHub).receive();
    return 0;
}
