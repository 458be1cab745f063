#pragma once

#include <QString>

#include <vector>

/** Writes the packets of 1,000 simulated terminals to a file. @return whether it is written */
bool simulateTo(const QString& path, int minutes);

/** The least of some times; what else runs on the machine only ever adds. */
double fastest(const std::vector<double>& seconds);
