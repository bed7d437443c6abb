#pragma once

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>

// Conversions between the core's UTF-8 and the windows' text. Any thread.

namespace quorvane::windows {

QString toQt(std::string_view text);
std::string fromQt(const QString& text);
// A remark of the core as a sentence of its own: with a capital at its start and a full stop behind a word.
QString asSentence(std::string_view text);
// The number formatted for the desktop's language.
QString inWords(std::uint64_t number);

} // namespace quorvane::windows
