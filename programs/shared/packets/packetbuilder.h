#pragma once

#include <QByteArray>

#include <initializer_list>

/** A record of a packet: a tag and its payload, value by value. */
class RecordBuilder
{
public:
    explicit RecordBuilder(quint8 tag) { byte(tag); }

    RecordBuilder& byte(quint8 value);
    RecordBuilder& big16(quint16 value);
    RecordBuilder& big32(quint32 value);
    RecordBuilder& little32(quint32 value);

    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
};

/** A terminal's packet in the short form: header, groups of records of one size, checksum. */
class PacketBuilder
{
public:
    /** Begins the packet of the terminal with this number. */
    explicit PacketBuilder(qint16 object);

    /**
     * Adds a group of at most 255 records of one size, of at most 255 bytes (254 for tag 226).
     *
     * Records of tag 226 travel in a group that names a size of one byte more than they have.
     */
    PacketBuilder& group(std::initializer_list<RecordBuilder> records);

    /** The packet with its length field filled in and its checksum (start 0xFFFF) appended; at most 65 535 bytes. */
    QByteArray sealed() const;

private:
    QByteArray m_bytes;
};
