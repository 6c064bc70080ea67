// src/support/text.cpp - numbers in text, words, fields and comma lists.
#include "support/text.h"

#include <charconv>
#include <cstdlib>
#include <system_error>

#include "support/dialogue.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// Where a number starts and ends in `text` from `start`: sign, digits with one point, exponent.
struct NumberScan {
    std::size_t body = 0;  // after the sign
    std::size_t end = 0;
    bool negative = false;
    bool valid = false;    // at least one mantissa digit
    bool d_exponent = false;
};

NumberScan scan_number(std::string_view text, std::size_t start) {
    NumberScan scan;
    std::size_t i = start;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        scan.negative = text[i] == '-';
        ++i;
    }
    scan.body = i;
    std::size_t digits = 0;
    while (i < text.size() && is_digit(text[i])) {
        ++i;
        ++digits;
    }
    if (i < text.size() && text[i] == '.') {
        ++i;
        while (i < text.size() && is_digit(text[i])) {
            ++i;
            ++digits;
        }
    }
    if (digits == 0) return scan;
    scan.valid = true;
    scan.end = i;
    if (i < text.size() && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' || text[i] == 'd')) {
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
        if (j < text.size() && is_digit(text[j])) {
            while (j < text.size() && is_digit(text[j])) ++j;
            scan.d_exponent = text[i] == 'D' || text[i] == 'd';
            scan.end = j;
        }
    }
    return scan;
}

double convert_scanned(std::string_view text, const NumberScan& scan) {
    std::string_view body = text.substr(scan.body, scan.end - scan.body);
    std::string owned;
    if (scan.d_exponent) {  // from_chars knows only E; the Fortran D exponent means the same
        owned.assign(body);
        for (char& c : owned)
            if (c == 'D' || c == 'd') c = 'E';
        body = owned;
    }
    double value = 0;
    const auto result = std::from_chars(body.data(), body.data() + body.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // Beyond the range of a double: strtod gives infinity or zero as the case may be.
        const std::string terminated(body);
        value = std::strtod(terminated.c_str(), nullptr);
    }
    return scan.negative ? -value : value;
}

std::size_t skip_blanks(std::string_view text, std::size_t i) {
    while (i < text.size() && is_blank(text[i])) ++i;
    return i;
}

std::string_view trim_view(std::string_view text) {
    std::size_t begin = skip_blanks(text, 0);
    std::size_t end = text.size();
    while (end > begin && is_blank(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

double parse_number_prefix(std::string_view text) {
    const NumberScan scan = scan_number(text, skip_blanks(text, 0));
    return scan.valid ? convert_scanned(text, scan) : 0.0;
}

bool is_numeric(std::string_view text) {
    const std::string_view trimmed = trim_view(text);
    const NumberScan scan = scan_number(trimmed, 0);
    return scan.valid && scan.end == trimmed.size();
}

std::string trim(std::string_view text) { return std::string(trim_view(text)); }

std::string to_upper(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = upper(c);
    return out;
}

bool iequals(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (upper(a[i]) != upper(b[i])) return false;
    return true;
}

std::string split_at(std::string& line, std::string_view separator) {
    const std::size_t cut = line.find(separator);
    if (cut == std::string::npos || separator.empty()) {
        std::string whole = trim(line);
        line.clear();
        return whole;
    }
    std::string before = trim(std::string_view(line).substr(0, cut));
    line = trim(std::string_view(line).substr(cut + separator.size()));
    return before;
}

std::string_view next_word(std::string_view& line) {
    std::size_t begin = skip_blanks(line, 0);
    std::size_t end = begin;
    while (end < line.size() && !is_blank(line[end])) ++end;
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(skip_blanks(line, end));
    return word;
}

std::string next_word(std::string& line) {
    std::string_view rest(line);
    const std::string word(next_word(rest));
    line.erase(0, line.size() - rest.size());
    return word;
}

std::vector<std::string> split_fields(std::string_view line, int count, char delimiter) {
    std::vector<std::string> fields;
    if (trim_view(line).empty()) return fields;
    std::string field;
    bool quoted = false;
    for (std::size_t i = 0; i <= line.size(); ++i) {
        const bool at_end = i == line.size();
        if (!at_end && line[i] == '"') {
            quoted = !quoted;
            continue;
        }
        if (at_end || (line[i] == delimiter && !quoted)) {
            fields.push_back(trim(field));
            field.clear();
            if (count > 0 && static_cast<int>(fields.size()) == count) break;
            continue;
        }
        field.push_back(line[i]);
    }
    return fields;
}

std::string right_justify(std::string_view text, int width) {
    if (width <= 0) return {};
    const auto size = static_cast<std::size_t>(width);
    if (text.size() >= size) return std::string(text.substr(0, size));
    std::string out(size - text.size(), ' ');
    out.append(text);
    return out;
}

int parse_number_list(Dialogue& dialogue, bool quiet, std::string_view text, int& count,
                      std::vector<std::string>& items) {
    count = 0;
    if (trim_view(text).empty()) return 0;
    items.clear();
    for (std::size_t start = 0;;) {
        const std::size_t cut = text.find(',', start);
        items.emplace_back(text.substr(start, cut == std::string_view::npos ? cut : cut - start));
        if (cut == std::string_view::npos) break;
        start = cut + 1;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!is_numeric(items[i]) || !(parse_number_prefix(items[i]) > 0)) {
            if (!quiet)
                dialogue.message_box("The weighting definitions are not valid for weight " +
                                     format_picture(static_cast<int>(i), "0"));
            return -1;
        }
        count = static_cast<int>(i) + 1;
    }
    return 0;
}

int parse_weight_list(Dialogue* dialogue, std::string_view text, std::vector<std::string>& values, int& count) {
    count = 0;
    values.clear();
    if (trim_view(text).empty()) return 0;
    for (std::size_t start = 0;;) {
        const std::size_t cut = text.find(',', start);
        values.emplace_back(text.substr(start, cut == std::string_view::npos ? cut : cut - start));
        if (cut == std::string_view::npos) break;
        start = cut + 1;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!(parse_number_prefix(values[i]) > 0)) {
            if (dialogue)
                dialogue->message_box("The weighting definitions are not valid for weight " +
                                      format_picture(static_cast<int>(i) + 1, "0"));
            return -1;
        }
        count = static_cast<int>(i) + 1;
    }
    return 0;
}

}  // namespace invsetup
