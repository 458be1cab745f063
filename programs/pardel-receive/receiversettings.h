#pragma once

#include "reception.h"
#include "terminalsettings.h"

#include <QString>

/** The options of the command line that are also keys of the INI group "Receiver"; what is empty was not given. */
struct ReceiverOptions
{
    QString iniFile;
    QString group;
    QString listen;
    QString spool;
    QString metrics;
    QString crcInit;
    bool noConvert = false;
};

/**
 * How a receiver works: the options, beneath them the group "Receiver" of the INI file, beneath that the defaults.
 *
 * | Key                | Default            | Meaning                                                            |
 * |--------------------|--------------------|--------------------------------------------------------------------|
 * | Group              |                    | the group of the file that describes the database                  |
 * | Spool              | pardel-spool       | the folder for packets that are not stored yet                     |
 * | Metrics            | the spool's metrics.prom | the file for the metrics                                     |
 * | Objects            | all                | whose packets are taken: all, or known (those in "Sensors")        |
 *
 * beside those of TerminalSettings::readReceiver. What is wrong there, an unknown key too, is an error. Paths that are
 * not absolute begin at the INI file's folder.
 */
struct ReceiverSettings
{
    TerminalSettings terminals;
    ReceptionSettings reception;
    QString metrics;

    /** What is wrong with the options or the file, as a sentence; empty if nothing is. */
    QString error;

    static ReceiverSettings read(const ReceiverOptions& options);
};
