#include <Pardel/interfaces.h>

#include "testfiles.h"

#include <QMetaMethod>

#include <array>
#include <cstring>

namespace {

/// The arguments of a call; each is large enough for any that a hub passes, and none looks like another.
struct Arguments
{
    std::array<quint64, 4> plain = {0x0102030405060701, 0x1112131415161701, 0x2122232425262701, 0x3132333435363701};
    QString text = QStringLiteral("text");
    QList<int> list = {1, 2, 3};
    QVarLengthArray<void*, 5> pointers = {nullptr}; // the first is for a result

    explicit Arguments(const QMetaMethod& method)
    {
        size_t used = 0;
        for (const QByteArray& type : method.parameterTypes()) {
            if (type == "QString")
                pointers += &text;
            else if (type == "QList<int>")
                pointers += &list;
            else
                pointers += &plain.at(used++);
        }
    }
};

/// Whether a receiver sees the very thing that the sender has, or for what travels by value, its copy.
bool isPassedOn(const QByteArray& type, const void* sent, const void* received)
{
    if (type.endsWith('&') || type == "QModelIndex")
        return sent == received;
    const bool isSmall = type == "int" || type == "uint";
    return std::memcmp(sent, received, type == "bool" ? 1 : isSmall ? 4 : sizeof(void*)) == 0;
}

/// Counts the signals that reach it and compares their arguments.
class Receiver : public QObject
{
public:
    Receiver(const QMetaMethod& slot, const Arguments& sent) : m_types(slot.parameterTypes()), m_sent(sent) {}

    int qt_metacall(QMetaObject::Call call, int id, void** arguments) override
    {
        Q_UNUSED(call)
        received += id - QObject::staticMetaObject.methodCount();
        for (int i = 0; i < m_types.size(); ++i) {
            if (!isPassedOn(m_types.at(i), m_sent.pointers.at(i + 1), arguments[i + 1]))
                received += -1;
        }
        return -1;
    }

    QList<int> received; ///< Numbers of the signals; -1 for an argument that is not the sender's.

private:
    QByteArrayList m_types;
    const Arguments& m_sent;
};

} // namespace

class TestInterfaces : public QObject
{
    Q_OBJECT

private:
    Notifyer m_notifyer;
    KernelNotifyer m_kernelNotifyer;
    DataPumpNotifyer m_dataPumpNotifyer;
    PlayerNotifyer m_playerNotifyer;

private Q_SLOTS:
    void methods_data() { addTableRows("hubs.txt"); }

    void methods()
    {
        const QByteArrayList tag = QByteArray(QTest::currentDataTag()).split(' ');
        QMap<QByteArray, QObject*> hubs;
        for (QObject* hub :
             std::initializer_list<QObject*>{&m_notifyer, &m_kernelNotifyer, &m_dataPumpNotifyer, &m_playerNotifyer})
            hubs.insert(hub->metaObject()->className(), hub);
        QObject* hub = hubs.value(tag.first());
        const int offset = hub->metaObject()->methodOffset();
        const QMetaMethod method = hub->metaObject()->method(offset + tag.last().toInt());
        QCOMPARE(method.methodSignature(), cell("signature"));
        QCOMPARE(method.methodType(), cell("kind") == "signal" ? QMetaMethod::Signal : QMetaMethod::Slot);
        QCOMPARE(method.access(), QMetaMethod::Public);
        QCOMPARE(method.parameterNames().join(' '), cell("parameters"));

        // A slot emits its own signal once, and no other.
        if (method.methodType() == QMetaMethod::Signal)
            return;
        Arguments arguments(method);
        Receiver receiver(method, arguments);
        for (int i = offset; hub->metaObject()->method(i).methodType() == QMetaMethod::Signal; ++i)
            QMetaObject::connect(hub, i, &receiver, QObject::staticMetaObject.methodCount() + i - offset);
        QMetaObject::metacall(hub, QMetaObject::InvokeMetaMethod, method.methodIndex(), arguments.pointers.data());
        QCOMPARE(receiver.received, QList<int>{cell("signal").toInt()});
    }
};

QTEST_APPLESS_MAIN(TestInterfaces)
#include "tst_interfaces.moc"
