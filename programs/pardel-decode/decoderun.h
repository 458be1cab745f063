#pragma once

#include "captureframer.h"
#include "decodedpacket.h"

#include <QStringList>

/** What pardel-decode has been asked to do. */
struct DecodeOptions
{
    /** What is written to standard output; with the table, a summary follows on standard error. */
    enum class Form
    {
        Table,
        Json, ///< One object a packet.
    };

    DecodeSettings settings;
    CaptureFramer::Form input = CaptureFramer::Raw;
    Form output = Form::Table;
    int jobs = 1;      ///< Threads that decode.
    QStringList files; ///< "-" is standard input, and so is an empty list.
};

/**
 * Decodes all files to standard output and tells on standard error what was skipped and what failed. A file that cannot
 * be read does not keep the others from being decoded. Memory is bounded whatever the files hold. When nobody reads the
 * output any more, it ends without a word.
 *
 * @return an ExitStatus: Incomplete when a packet was rejected or something skipped
 */
int decodeFiles(const DecodeOptions& options);
