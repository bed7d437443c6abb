#include "platform/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace quorvane::platform {

namespace {

// Nearly all text here is ASCII paths: eight bytes at a time, then the rest one by one.
std::size_t asciiPrefixLength(std::string_view text)
{
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        if ((word & highBits) != 0)
            break;
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80)
        ++at;
    return at;
}

void appendAsciiSmallLetters(std::string& out, std::string_view text)
{
    const std::size_t start = out.size();
    out.resize(start + text.size());
    std::transform(text.begin(), text.end(), out.begin() + static_cast<std::ptrdiff_t>(start), [](char c) {
        const bool capital = c >= 'A' && c <= 'Z';
        return static_cast<char>(c + (capital ? 'a' - 'A' : 0));
    });
}

UChar32 nextCodePoint(std::string_view text, std::size_t& at)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    UChar32 codePoint = 0;
    U8_NEXT(bytes, at, text.size(), codePoint);
    return codePoint;
}

// `text`, cut at the largest length the library takes.
icu::UnicodeString unicodeText(std::string_view text)
{
    const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX));
    return icu::UnicodeString::fromUTF8({text.data(), length});
}

// The Turkic languages fold I and i differently.
bool localeIsTurkic()
{
    const std::string_view language = icu::Locale::getDefault().getLanguage();
    return language == "tr" || language == "az";
}

} // namespace

bool isValidUtf8(std::string_view text)
{
    std::size_t at = asciiPrefixLength(text);
    while (at < text.size()) {
        if (nextCodePoint(text, at) < 0)
            return false;
        at += asciiPrefixLength(text.substr(at));
    }
    return true;
}

std::size_t utf16Length(std::string_view text)
{
    std::size_t at = asciiPrefixLength(text);
    std::size_t units = at;
    while (at < text.size())
        units += nextCodePoint(text, at) > 0xFFFF ? 2U : 1U;
    return units;
}

void appendFoldedCase(std::string& out, std::string_view text)
{
    const std::size_t ascii = asciiPrefixLength(text);
    appendAsciiSmallLetters(out, text.substr(0, ascii));
    if (ascii == text.size())
        return;
    unicodeText(text.substr(ascii)).foldCase(U_FOLD_CASE_DEFAULT).toUTF8String(out);
}

std::string foldedCase(std::string_view text)
{
    std::string key;
    appendFoldedCase(key, text);
    return key;
}

void appendSearchKey(std::string& out, std::string_view text)
{
    static const bool turkic = localeIsTurkic();
    if (!turkic && asciiPrefixLength(text) == text.size()) {
        appendAsciiSmallLetters(out, text);
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* composed = icu::Normalizer2::getNFCInstance(status);
    icu::UnicodeString folded = unicodeText(text);
    if (U_SUCCESS(status)) {
        // Composed before folding, too: the Turkic dotted capital I folds as one letter, not as I with a
        // combining dot.
        folded = composed->normalize(folded, status);
        folded.foldCase(turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
        folded = composed->normalize(folded, status);
    }
    folded.toUTF8String(out);
}

std::string searchKey(std::string_view text)
{
    std::string key;
    appendSearchKey(key, text);
    return key;
}

void appendCodePoint(std::string& out, char32_t codePoint)
{
    std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes.data(), length, codePoint);
    out.append(bytes.begin(), bytes.begin() + length);
}

std::optional<std::string> textFromUtf16(std::string_view bytes, bool littleEndian)
{
    const std::size_t units = bytes.size() / 2;
    const auto unit = [&](std::size_t at) -> std::uint32_t {
        const auto first = static_cast<unsigned char>(bytes[2 * at]);
        const auto second = static_cast<unsigned char>(bytes[2 * at + 1]);
        return littleEndian ? second * 0x100U + first : first * 0x100U + second;
    };
    std::string text;
    text.reserve(units);
    for (std::size_t at = 0; at < units; ++at) {
        std::uint32_t codePoint = unit(at);
        if (U16_IS_LEAD(codePoint) && at + 1 < units && U16_IS_TRAIL(unit(at + 1)))
            codePoint = static_cast<std::uint32_t>(U16_GET_SUPPLEMENTARY(codePoint, unit(++at)));
        else if (U_IS_SURROGATE(codePoint))
            return std::nullopt;
        appendCodePoint(text, codePoint);
    }
    return bytes.size() % 2 == 0 ? std::optional(std::move(text)) : std::nullopt;
}

std::size_t startOfLastCharacter(std::string_view text)
{
    constexpr std::size_t longest = 4;
    for (std::size_t length = 1; length <= longest && length <= text.size(); ++length) {
        const auto byte = static_cast<unsigned char>(text[text.size() - length]);
        if ((byte & 0xC0U) != 0x80U)
            return text.size() - length;
    }
    return text.size();
}

std::string utf16FromText(std::string_view text)
{
    std::string bytes;
    const auto append = [&bytes](std::uint32_t unit) {
        bytes += static_cast<char>(unit >> 8U & 0xFFU);
        bytes += static_cast<char>(unit & 0xFFU);
    };
    for (std::size_t at = 0; at < text.size();) {
        const UChar32 next = nextCodePoint(text, at);
        const auto codePoint = next < 0 ? 0xFFFDU : static_cast<std::uint32_t>(next);
        if (codePoint > 0xFFFF) {
            append(U16_LEAD(codePoint));
            append(U16_TRAIL(codePoint));
        } else {
            append(codePoint);
        }
    }
    return bytes;
}

std::string textFromMacRoman(std::string_view bytes)
{
    const icu::UnicodeString decoded(bytes.data(), static_cast<std::int32_t>(bytes.size()), "macintosh");
    std::string text;
    return decoded.toUTF8String(text);
}

} // namespace quorvane::platform
