#pragma once

#include "captureframer.h"
#include "decodedpacket.h"

#include <QStringList>

/** What pardel-decode has been asked to do. */
struct DecodeOptions
{
    DecodeSettings settings;
    CaptureFramer::Form form = CaptureFramer::Raw;
    bool json = false; ///< One JSON object a packet instead of the table.
    QStringList files; ///< "-" is standard input, and so is an empty list.
};

/**
 * Decodes all files to standard output and tells what was skipped, what failed and (with the table) a summary on
 * standard error. A file that cannot be read does not keep the others from being decoded. Memory is bounded whatever
 * the files hold. When nobody reads the output any more, it ends without a word.
 *
 * @return an ExitStatus: Incomplete when a packet was rejected or something skipped
 */
int decodeFiles(const DecodeOptions& options);
