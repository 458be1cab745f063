#include "ratios.h"

#include <Pardel/absgraphobj.h>
#include <Pardel/apprecords.h>

#include <QDataStream>
#include <QIODevice>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using Dictionary = QMap<QString, unsigned int>;

QString name(int number)
{
    return QStringLiteral("name of entry %1").arg(number, 6, 10, QLatin1Char('0'));
}

/// A block with its objects.
class HeldBlock
{
public:
    HeldBlock() = default;
    Q_DISABLE_COPY_MOVE(HeldBlock)

    ~HeldBlock()
    {
        for (int i = 0; i < m_block.objectCount; ++i)
            delete m_block.objects[i];
        delete[] m_block.objects;
    }

    BlockGraphObject* get() { return &m_block; }

private:
    BlockGraphObject m_block;
};

void make(QList<DocumentInfo>& documents, int count)
{
    for (int i = 0; i < count; ++i)
        documents += DocumentInfo{i, name(i), QStringLiteral("description"), 1, 2};
}

void make(QList<Setting>& settings, int count)
{
    for (int i = 0; i < count; ++i)
        settings += Setting{name(i), QStringLiteral("value")};
}

void make(Dictionary& dictionary, int count)
{
    for (int i = 0; i < count; ++i)
        dictionary.insert(name(i), static_cast<unsigned int>(i));
}

void make(QList<CardsProperty>& cards, int count)
{
    for (int i = 0; i < count; ++i)
        cards += CardsProperty{i, name(i), QStringLiteral("description"), 1, "data", 2};
}

void make(HeldBlock& held, int count)
{
    BlockGraphObject& block = *held.get();
    block.formatVersion = 3;
    block.objects = new AbsGraphObject*[static_cast<size_t>(count)];
    block.objectCount = count;
    for (int i = 0; i < count; ++i) {
        auto* object = new AbsGraphObject;
        object->identifier = i;
        object->text = name(i);
        object->points = {{i, 1}, {i, 2}, {i, 3}, {i, 4}};
        object->properties = {{QStringLiteral("color"), 5}, {QStringLiteral("label"), name(i)}};
        block.objects[i] = object;
    }
}

struct Ours
{
    template <typename T>
    static void write(QDataStream& stream, T& container)
    {
        stream << container;
    }

    static void write(QDataStream& stream, HeldBlock& block) { stream << block.get(); }

    template <typename T>
    static void read(QDataStream& stream, T& container)
    {
        stream >> container;
    }

    static void read(QDataStream& stream, HeldBlock& block) { stream >> block.get(); }
};

/// The same calls on the stream with nothing around them: no test for its end, no limit, trust in every count.
struct Bare
{
    static void write(QDataStream& stream, const QList<DocumentInfo>& documents)
    {
        stream << static_cast<qint32>(documents.size());
        for (const DocumentInfo& document : documents)
            stream << document.id << document.name << document.description << document.type << document.status;
    }

    static void write(QDataStream& stream, const QList<Setting>& settings)
    {
        stream << static_cast<qint32>(settings.size());
        for (const Setting& setting : settings)
            stream << setting.name.toUtf8() << setting.value.toUtf8();
    }

    static void write(QDataStream& stream, const Dictionary& dictionary)
    {
        stream << static_cast<qint32>(dictionary.size());
        for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry)
            stream << entry.key().toUtf8() << entry.value();
    }

    static void write(QDataStream& stream, const QList<CardsProperty>& cards)
    {
        stream << static_cast<qint32>(cards.size());
        for (const CardsProperty& card : cards)
            stream << card.name << card.description << card.type << card.data << card.number << card.id;
    }

    static void write(QDataStream& stream, HeldBlock& held)
    {
        const BlockGraphObject& block = *held.get();
        stream << block.formatVersion << block.identifier << block.objectCount << block.x1 << block.y1 << block.x2
               << block.y2 << block.firstColor << block.secondColor << block.displayMode;
        for (int i = 0; i < block.objectCount; ++i) {
            const AbsGraphObject& object = *block.objects[i];
            stream << object.type << object.identifier << object.text << object.points
                   << static_cast<qint32>(object.properties.size());
            for (auto property = object.properties.cend(); property != object.properties.cbegin();) {
                --property;
                stream << property.key() << property.value();
            }
        }
    }

    template <typename T, typename ReadOne>
    static void readList(QDataStream& stream, QList<T>& list, ReadOne readOne)
    {
        qint32 count = 0;
        stream >> count;
        for (qint32 i = 0; i < count; ++i) {
            T element;
            readOne(element);
            list.append(element);
        }
    }

    static QString readText(QDataStream& stream)
    {
        QByteArray bytes;
        stream >> bytes;
        return QString::fromUtf8(bytes.constData());
    }

    static void read(QDataStream& stream, QList<DocumentInfo>& documents)
    {
        readList(stream, documents, [&stream](DocumentInfo& document) {
            stream >> document.id >> document.name >> document.description >> document.type >> document.status;
        });
    }

    static void read(QDataStream& stream, QList<Setting>& settings)
    {
        readList(stream, settings, [&stream](Setting& setting) {
            setting.name = readText(stream);
            setting.value = readText(stream);
        });
    }

    static void read(QDataStream& stream, QList<CardsProperty>& cards)
    {
        readList(stream, cards, [&stream](CardsProperty& card) {
            stream >> card.name >> card.description >> card.type >> card.data >> card.number >> card.id;
        });
    }

    static void read(QDataStream& stream, Dictionary& dictionary)
    {
        qint32 count = 0;
        stream >> count;
        for (qint32 i = 0; i < count; ++i) {
            const QString key = readText(stream);
            quint32 value = 0;
            stream >> value;
            dictionary.insert(key, value);
        }
    }

    static void read(QDataStream& stream, HeldBlock& held)
    {
        BlockGraphObject& block = *held.get();
        stream >> block.formatVersion >> block.identifier >> block.objectCount >> block.x1 >> block.y1 >> block.x2 >>
            block.y2 >> block.firstColor >> block.secondColor >> block.displayMode;
        block.objects = new AbsGraphObject*[static_cast<size_t>(block.objectCount)];
        for (int i = 0; i < block.objectCount; ++i) {
            block.objects[i] = new AbsGraphObject;
            AbsGraphObject& object = *block.objects[i];
            stream >> object.type >> object.identifier >> object.text >> object.points >> object.properties;
        }
    }
};

template <typename Way, typename T>
QByteArray writtenBy(T& container)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    Way::write(stream, container);
    return bytes;
}

template <typename Way, typename T>
void write(benchmark::State& state)
{
    T container;
    make(container, static_cast<int>(state.range(0)));
    if (writtenBy<Way>(container) != writtenBy<Ours>(container)) {
        state.SkipWithError("the bytes differ");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(writtenBy<Way>(container).size());
}

template <typename Way, typename T>
void read(benchmark::State& state)
{
    T container;
    make(container, static_cast<int>(state.range(0)));
    const QByteArray bytes = writtenBy<Ours>(container);
    auto target = std::make_unique<T>();
    for (auto _ : state) {
        QDataStream stream(bytes);
        Way::read(stream, *target);
        state.PauseTiming(); // releasing what was read is not reading
        target = std::make_unique<T>();
        state.ResumeTiming();
    }
}

/**
 * Registers a container's benchmarks and adds their ratios: ours beside the bare calls at both sizes, and the large
 * size beside a tenth of it, for the bare calls too: caches have their part in how these grow.
 */
template <typename T>
void measure(std::vector<Ratio>& ratios, const std::string& what, int small, int large)
{
    const auto add = [&](const std::string& title, auto ours, auto bare) {
        const auto ofSize = [](const std::string& name, int size) { return name + "/" + std::to_string(size); };
        const std::string bareTitle = title + " bare";
        benchmark::RegisterBenchmark(title.c_str(), ours)->Arg(small)->Arg(large / 10)->Arg(large);
        benchmark::RegisterBenchmark(bareTitle.c_str(), bare)->Arg(small)->Arg(large / 10)->Arg(large);
        for (const int size : {small, large})
            ratios.push_back({ofSize(title, size), ofSize(bareTitle, size), Ratio::AtMost, 1.2});
        for (const std::string& name : {title, bareTitle})
            ratios.push_back({ofSize(name, large), ofSize(name, large / 10), Ratio::AtMost, 12});
    };
    add("write " + what, write<Ours, T>, write<Bare, T>);
    add("read " + what, read<Ours, T>, read<Bare, T>);
}

} // namespace

int main(int argc, char* argv[])
{
    std::vector<Ratio> ratios;
    measure<QList<DocumentInfo>>(ratios, "documents", 1000, 100000);
    measure<QList<Setting>>(ratios, "settings", 1000, 100000);
    measure<Dictionary>(ratios, "dictionary", 1000, 100000);
    measure<QList<CardsProperty>>(ratios, "cards", 1000, 100000);
    measure<HeldBlock>(ratios, "block", 100, 10000);
    return runWithRatios(argc, argv, ratios);
}
