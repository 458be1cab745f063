#pragma once

struct ReceiverSettings;

/**
 * Prints for people what the receiver with these settings wrote last into its metrics' file.
 *
 * @return Done if it is running and stores, Incomplete if not, Failed if the file cannot be read
 */
int printStatus(const ReceiverSettings& settings);
