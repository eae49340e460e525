#pragma once

// What nearly every test uses comes with this header.
#include <QDir>
#include <QFile>
#include <QSize>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <span>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

using Qt::StringLiterals::operator""_s;

/// Lets GoogleTest print Qt strings in its messages.
void PrintTo(const QString& text, std::ostream* stream);

namespace support {

/// Runs the event loop until the condition holds; false when the deadline passes first.
/// Main thread only.
[[nodiscard]] bool spinUntil(
    const std::function<bool()>& condition,
    std::chrono::milliseconds deadline = std::chrono::seconds(20));

/// Writes the bytes to the path, making the folders above it; aborts the test on failure.
void writeFile(const QString& path, const QByteArray& bytes);

/// The whole content of a file; empty if it can't be read.
[[nodiscard]] QByteArray readFile(const QString& path);

/// A picture of one colour, in the format that the ending of its name says; makes the folders
/// above.
void writePicture(const QString& path, QSize size = {40, 30});

/// Every value is below those behind it and equal to itself; `compare` answers -1, 0 or 1.
template <typename Values>
void expectAscending(const Values& values, const auto& compare, int line = __builtin_LINE()) {
    const auto at = [&](std::ptrdiff_t index) -> const auto& {
        return *(std::begin(values) + index);
    };
    for (std::ptrdiff_t left = 0; left < std::ssize(values); ++left)
        for (std::ptrdiff_t right = 0; right < std::ssize(values); ++right)
            EXPECT_EQ(compare(at(left), at(right)), (left > right) - (left < right))
                << "line " << line << ", " << left << " and " << right;
}

/// What the function answers for each of them, in their order.
QStringList listed(const auto& range, const auto& function) {
    QStringList texts;
    for (const auto& each : range)
        texts.append(function(each));
    return texts;
}

[[nodiscard]] inline QStringList sorted(QStringList texts) {
    texts.sort();
    return texts;
}

/// Of what was stopped before it began.
[[nodiscard]] inline std::stop_token stopped() {
    static const std::stop_source source = [] {
        std::stop_source made;
        made.request_stop();
        return made;
    }();
    return source.get_token();
}

/// The words of a text.
inline QStringList words(const char* text) {
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

/// The filter for the test that runs.
inline QString presentTest() {
    const auto& test = *testing::UnitTest::GetInstance()->current_test_info();
    return QString::fromLatin1(test.test_suite_name()) + u'.' + QString::fromLatin1(test.name());
}

/// Runs the rest of the scope in another time zone.
struct TimeZone {
    explicit TimeZone(const char* zone);
    ~TimeZone();
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    const QByteArray _before;
};

/// A damaged file: cut, with a piece twice, with random or extreme bytes, most of them near the
/// start, where headers are. Never empty.
[[nodiscard]] QByteArray mutated(QByteArray bytes, std::mt19937& random);

/// What the groups of the pattern match in the program's own sources.
[[nodiscard]] QSet<QString> namesInSources(const QString& folder, const QString& pattern);

} // namespace support
