#pragma once

#include <QElapsedTimer>
#include <QString>

/** A line on the terminal that tells how far a long file has been read. Without a terminal it stays silent. */
class Progress
{
public:
    Progress();

    /** A new file begins, of @p size bytes, or -1 where nobody knows. */
    void begin(const QString& name, qint64 size);
    /** So many bytes of it have been read. Draws the line now and then, from the first half second on. */
    void update(qint64 bytes, qint64 packets);
    /** Takes the line away, so that something else can be written to standard error, until the next update. */
    void clear();
    /** The same before something is written to standard output, if that is a terminal too. */
    void makeRoom();

private:
    const bool m_shown;
    QString m_name;
    qint64 m_size = -1;
    QElapsedTimer m_sinceDrawn;
    bool m_begun = false; // the line has been drawn for this file
    bool m_drawn = false; // and stands there now
};
