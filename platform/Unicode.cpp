#include "platform/Unicode.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace quorvane {

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

// `text` as far as the library can count.
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
        // Composed before, too: the Turkic dotted capital I folds as one letter, not as I with a dot behind.
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

std::string textFromMacRoman(std::string_view bytes)
{
    const icu::UnicodeString decoded(bytes.data(), static_cast<std::int32_t>(bytes.size()), "macintosh");
    std::string text;
    return decoded.toUTF8String(text);
}

} // namespace quorvane
