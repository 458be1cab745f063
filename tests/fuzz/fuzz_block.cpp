#include "fuzz.h"
#include "heldblock.h"

#include <QDataStream>
#include <QIODevice>

#include <new>

namespace {

struct Block : HeldBlock
{
    /// The status of reading, or of a block that cannot be.
    QDataStream::Status read(const QByteArray& bytes, int version)
    {
        QDataStream stream(bytes);
        stream.setVersion(version);
        try {
            stream >> static_cast<BlockGraphObject*>(this);
        } catch (const std::bad_array_new_length&) {
            return QDataStream::ReadCorruptData;
        }
        return stream.status();
    }

    QByteArray written(int version)
    {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream.setVersion(version);
        stream << static_cast<BlockGraphObject*>(this);
        return bytes;
    }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const unsigned choice = takeByte(data, size);
    const int version = QDataStream::Qt_4_0 +
                        static_cast<int>(choice) % (QDataStream::Qt_DefaultCompiledVersion + 1 - QDataStream::Qt_4_0);
    const QByteArray bytes = bytesOf(data, size);
    Block block;
    const QDataStream::Status status = block.read(bytes, version);
    if (!block.objects)
        return 0;
    expect(block.objectCount >= 0 && block.objectCount <= bytes.size(), "objects are no more than the bytes");
    const bool isVersioned = block.formatVersion >= 1 && block.formatVersion <= 4;

    // From the oldest form that is promised on, whatever was read is written and read again.
    if (status != QDataStream::Ok || version < QDataStream::Qt_4_5 || !isVersioned)
        return 0;
    Block again;
    expect(again.read(block.written(version), version) == QDataStream::Ok, "what is written is read");
    expect(again.objectCount == block.objectCount, "no object gets lost");
    for (int i = 0; i < block.objectCount; ++i)
        expect(again.objects[i]->properties.keys() == block.objects[i]->properties.keys(), "no property gets lost");
    return 0;
}
