#pragma once

#include <QJsonObject>
#include <QString>

/// Counts and timings of this run, for `--stats`. Main thread.
class Statistics {
public:
    /// Milliseconds since the kernel started this process.
    [[nodiscard]] static double sinceProcessStart();

    void set(const QString& name, double value);
    /// Keeps the first time of each name.
    void markOnce(const QString& name);

    /// Writes one JSON object to the file, or to standard output for "-"; the peak of resident
    /// memory is added on the way. False if the file can't be written.
    [[nodiscard]] bool write(const QString& file);

private:
    QJsonObject _figures;
};
