#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

QT_BEGIN_NAMESPACE
class QDataStream;
QT_END_NAMESPACE

/** @file
 * Small records that the applications pass between their modules and keep in files: documents, settings, cards,
 * terminal commands with their parameters, and dictionaries of names. The library reads no meaning into their fields:
 * it carries them.
 *
 * Numbers and texts follow the settings of the stream; nothing is put around them, neither a version nor a checksum.
 * Errors are in the stream's status: a single record that ends early has 0 or nothing in what was not reached.
 * docs/streams.md gives the bytes.
 *
 * The lists come in two formats. Those of DocumentInfo and Setting and the dictionary have a *signed* 32-bit count, and
 * their readers add to what is there: a count of 0 or below is an empty list, and where the stream is too short for the
 * count, the elements that are missing are made up all the same, but no more than 65,536 of them, so that a damaged
 * count cannot fill the memory. The list of CardsProperty has an *unsigned* one; its reader replaces what is there and
 * makes nothing up.
 *
 * Writers change nothing, whether they take a constant record or not; both forms write the same bytes.
 */

/** Description of a document. Streamed in the order of its members. */
struct DocumentInfo
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    qint32 id = 0;
    QString name;
    QString description;
    qint8 type = 0;
    qint8 status = 0;
    /// @}
};

/** A named setting. Streamed only in lists. */
struct Setting
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QString name;
    QString value;
    /// @}
};

/** Properties of a card. Streamed from name on, with the id at the end. */
struct CardsProperty
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    qint32 id = 0; ///< Streamed last.
    QString name;
    QString description;
    qint32 type = 0;
    QByteArray data;
    qint16 number = 0;
    /// @}
};

/** Description of a terminal's command. Streamed with the type before the description. */
struct CmdDesc
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    qint32 id = 0;
    QString name;
    QString description; ///< Streamed after type.
    qint32 type = 0;
    QByteArray data;
    qint32 flags = 0;
    /// @}
};

/** Description of one parameter of a command. Streamed in the order of its members. */
struct ParamDesc
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QByteArray name;
    QByteArray data;
    QString description;
    qint32 type = 0;
    qint32 flags = 0;
    /// @}
};

/** @name Stream form of DocumentInfo
 * @{ */
/** id (32 bits), name, description, type (8), status (8). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, DocumentInfo& document);
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const DocumentInfo& document);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, DocumentInfo& document);
/** @} */

/** @name Stream form of CardsProperty
 * @{ */
/** name, description, type (32 bits), data, number (16), id (32). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const CardsProperty& card);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, CardsProperty& card);
/** @} */

/** @name Stream form of CmdDesc
 * @{ */
/** id (32 bits), name, type (32), description, data, flags (32). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const CmdDesc& command);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, CmdDesc& command);
/** @} */

/** @name Stream form of ParamDesc
 * @{ */
/** name, data, description, type (32 bits), flags (32). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const ParamDesc& parameter);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, ParamDesc& parameter);
/** @} */

/** @name Stream form of a list of documents
 * @{ */
/** Count (32 bits, signed) and each document. The reader appends. */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, QList<DocumentInfo>& documents);
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const QList<DocumentInfo>& documents);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, QList<DocumentInfo>& documents);
/** @} */

/** @name Stream form of a list of settings
 * @{ */
/**
 * Count (32 bits, signed) and each setting's name and value as byte arrays in UTF-8. The reader appends; it takes a
 * text up to its first zero byte, although the writer writes all of it.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, QList<Setting>& settings);
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const QList<Setting>& settings);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, QList<Setting>& settings);
/** @} */

/** @name Stream form of a dictionary
 * @{ */
/**
 * Count (32 bits, signed) and each name, as a byte array in UTF-8, with its number (32), in ascending order of the
 * names. The reader adds; it takes a name up to its first zero byte, and a name that is there, or comes again, takes
 * the later number.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, QMap<QString, unsigned int>& dictionary);
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const QMap<QString, unsigned int>& dictionary);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, QMap<QString, unsigned int>& dictionary);
/** @} */

/**
 * Reads a list of cards: count (32 bits, unsigned) and each card. The list is emptied first and then holds the cards
 * that came whole, up to the first that did not, which is then seen in the stream's status.
 *
 * Writing is Qt's own: the same form.
 */
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, QList<CardsProperty>& cards);
