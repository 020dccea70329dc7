#include "platform/text/StringFormat.h"

#include "platform/core/Value.h"

#include <unicode/numberformatter.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <utility>

namespace velmorant::platform {
namespace {

struct Conversion {
    int position = 0;  // 1-based for "%n$", 0 for the next argument
    std::string flags;
    std::string width;
    int precision = -1;
    char conversion = 0;
};

// Reads one conversion after '%'; returns the index just past it, or npos
// when the text there is not a conversion (it is then copied as it stands).
std::size_t parseConversion(std::string_view f, std::size_t i, Conversion& conv) {
    auto digits = [&](std::size_t& j) {
        std::size_t start = j;
        while (j < f.size() && f[j] >= '0' && f[j] <= '9') ++j;
        return f.substr(start, j - start);
    };
    std::size_t j = i;
    std::size_t k = j;
    auto pos = digits(k);
    if (!pos.empty() && k < f.size() && f[k] == '$') {
        std::from_chars(pos.data(), pos.data() + pos.size(), conv.position);
        j = k + 1;
    }
    while (j < f.size() && std::string_view("-+ #0'").find(f[j]) != std::string_view::npos) conv.flags += f[j++];
    conv.width = std::string(digits(j));
    if (j < f.size() && f[j] == '.') {
        ++j;
        auto p = digits(j);
        conv.precision = 0;
        if (!p.empty()) std::from_chars(p.data(), p.data() + p.size(), conv.precision);
    }
    while (j < f.size() && std::string_view("hlqLzjt").find(f[j]) != std::string_view::npos) ++j;
    if (j >= f.size()) return std::string_view::npos;
    char c = f[j];
    if (std::string_view("@dDiuUxXoOfFeEgGaAsScCp%").find(c) == std::string_view::npos) return std::string_view::npos;
    conv.conversion = c;
    return j + 1;
}

std::int64_t asInteger(const FormatArg* arg) {
    if (!arg) return 0;
    const auto& v = arg->value();
    if (auto* i = std::get_if<std::int64_t>(&v)) return *i;
    if (auto* d = std::get_if<double>(&v)) return Value(*d).integerValue();
    if (auto* s = std::get_if<std::string>(&v)) return leadingInteger(*s);
    return 0;
}

double asDouble(const FormatArg* arg) {
    if (!arg) return 0;
    const auto& v = arg->value();
    if (auto* d = std::get_if<double>(&v)) return *d;
    if (auto* i = std::get_if<std::int64_t>(&v)) return static_cast<double>(*i);
    if (auto* s = std::get_if<std::string>(&v)) return leadingDouble(*s);
    return 0;
}

std::string asObject(const FormatArg* arg) {
    if (!arg) return "(null)";
    const auto& v = arg->value();
    if (auto* s = std::get_if<std::string>(&v)) return *s;
    if (auto* i = std::get_if<std::int64_t>(&v)) return std::to_string(*i);
    if (auto* d = std::get_if<double>(&v)) {
        char buf[64];
        auto [end, ec] = std::to_chars(buf, buf + sizeof buf, *d);
        return std::string(buf, end);
    }
    return "(null)";
}

std::string cFormat(const Conversion& conv, const char* length, char conversion, auto value) {
    std::string f = "%" + conv.flags + conv.width;
    if (conv.precision >= 0) f += "." + std::to_string(conv.precision);
    f += length;
    f += conversion;
    int n = std::snprintf(nullptr, 0, f.c_str(), value);
    if (n < 0) return {};
    std::string out(static_cast<std::size_t>(n), '\0');
    std::snprintf(out.data(), out.size() + 1, f.c_str(), value);
    return out;
}

std::string pad(std::string text, const Conversion& conv) {
    int width = 0;
    if (!conv.width.empty()) std::from_chars(conv.width.data(), conv.width.data() + conv.width.size(), width);
    // Width counts characters; count UTF-8 lead bytes.
    int length = 0;
    for (unsigned char c : text) length += (c & 0xC0) != 0x80;
    if (length >= width) return text;
    std::string fill(static_cast<std::size_t>(width - length), ' ');
    return conv.flags.find('-') != std::string::npos ? text + fill : fill + text;
}

using NumberWriter = std::string (*)(std::string_view localeId, const Conversion& conv, const FormatArg* arg);

std::string plainNumber(std::string_view, const Conversion& conv, const FormatArg* arg) {
    switch (conv.conversion) {
        case 'd': case 'D': case 'i': return cFormat(conv, "ll", 'd', static_cast<long long>(asInteger(arg)));
        case 'u': case 'U': return cFormat(conv, "ll", 'u', static_cast<unsigned long long>(asInteger(arg)));
        case 'x': case 'X': case 'o':
            return cFormat(conv, "ll", conv.conversion, static_cast<unsigned long long>(asInteger(arg)));
        case 'O': return cFormat(conv, "ll", 'o', static_cast<unsigned long long>(asInteger(arg)));
        case 'c': case 'C': return cFormat(conv, "", 'c', static_cast<int>(asInteger(arg)));
        default: return cFormat(conv, "", conv.conversion, asDouble(arg));
    }
}

// The formatter for whole numbers (`fraction` < 0) or that many fraction digits
// in a locale, kept per thread: made afresh, each number costs ICU its whole
// set-up (a few hundred thousand instructions), and kept, ICU compiles it.
const icu::number::LocalizedNumberFormatter& numberFormatter(std::string_view localeId, int fraction) {
    thread_local std::map<std::pair<std::string, int>, icu::number::LocalizedNumberFormatter, std::less<>> kept;
    auto key = std::make_pair(std::string(localeId), fraction);
    if (auto it = kept.find(key); it != kept.end()) return it->second;
    if (kept.size() >= 64) kept.clear();  // a bound for servers asked for every locale
    auto formatter = icu::number::NumberFormatter::withLocale(icu::Locale(key.first.c_str())).roundingMode(UNUM_ROUND_HALFEVEN);
    auto precise = fraction < 0 ? formatter.precision(icu::number::Precision::integer())
                                : formatter.precision(icu::number::Precision::fixedFraction(fraction));
    return kept.emplace(std::move(key), std::move(precise)).first->second;
}

std::string icuNumber(std::string_view localeId, const Conversion& conv, const FormatArg* arg) {
    bool integer = std::string_view("dDiuU").find(conv.conversion) != std::string_view::npos;
    bool fixed = conv.conversion == 'f' || conv.conversion == 'F';
    if (!integer && !fixed) return plainNumber(localeId, conv, arg);
    UErrorCode status = U_ZERO_ERROR;
    int fraction = integer ? -1 : conv.precision < 0 ? 6 : conv.precision;
    const icu::number::LocalizedNumberFormatter& formatter = numberFormatter(localeId, fraction);
    icu::UnicodeString text = integer ? formatter.formatInt(asInteger(arg), status).toString(status)
                                      : formatter.formatDouble(asDouble(arg), status).toString(status);
    if (U_FAILURE(status)) return plainNumber(localeId, conv, arg);
    std::string out;
    text.toUTF8String(out);
    if (conv.flags.find('+') != std::string::npos && !out.empty() && out[0] != '-') out = "+" + out;
    return pad(std::move(out), conv);
}

std::string render(std::string_view localeId, std::string_view format, const std::vector<FormatArg>& args,
                   NumberWriter number) {
    std::string out;
    std::size_t next = 0;
    for (std::size_t i = 0; i < format.size();) {
        char c = format[i];
        if (c != '%') {
            out += c;
            ++i;
            continue;
        }
        Conversion conv;
        std::size_t end = parseConversion(format, i + 1, conv);
        if (end == std::string_view::npos) {
            out += c;
            ++i;
            continue;
        }
        i = end;
        if (conv.conversion == '%') {
            out += '%';
            continue;
        }
        std::size_t index = conv.position > 0 ? static_cast<std::size_t>(conv.position - 1) : next++;
        const FormatArg* arg = index < args.size() ? &args[index] : nullptr;
        if (conv.conversion == '@' || conv.conversion == 's' || conv.conversion == 'S') {
            std::string text = asObject(arg);
            if (conv.precision >= 0 && static_cast<std::size_t>(conv.precision) < text.size())
                text.resize(static_cast<std::size_t>(conv.precision));
            out += pad(std::move(text), conv);
        } else if (conv.conversion == 'p') {
            out += "0x0";
        } else {
            out += number(localeId, conv, arg);
        }
    }
    return out;
}

}  // namespace

std::string stringWithFormat(std::string_view format, const std::vector<FormatArg>& args) {
    return render("", format, args, plainNumber);
}

std::string localizedStringWithFormat(std::string_view localeId, std::string_view format,
                                      const std::vector<FormatArg>& args) {
    return render(localeId, format, args, icuNumber);
}

}  // namespace velmorant::platform
