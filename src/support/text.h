// src/support/text.h - parsing and cutting of texts: numbers in text, words, fields, trimming.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace invsetup {

class Dialogue;

/// The longest numeric prefix after leading blanks ("12abc" reads 12, " -1.5e3x" reads -1500);
/// 0 when there is none. Accepts sign, digits, one decimal point and an exponent (E or D, with an
/// optional sign) when digits follow it ("1e" reads 1). No hexadecimal, no "inf" or "nan".
double parse_number_prefix(std::string_view text);
/// True when the whole text, blanks around it allowed, reads as one number.
bool is_numeric(std::string_view text);

/// Blanks and tabs removed at both ends.
std::string trim(std::string_view text);
std::string to_upper(std::string_view text);
bool iequals(std::string_view a, std::string_view b);

/// Cuts `line` at the first `separator`: returns the trimmed part before it and leaves the trimmed
/// rest in `line`. Without the separator the whole trimmed line is returned and `line` emptied.
std::string split_at(std::string& line, std::string_view separator);
/// Takes the first blank-separated word off `line` and returns it; "" for an empty line. Blanks
/// and tabs separate; `line` keeps the rest without its leading blanks.
std::string next_word(std::string& line);
/// The same on a view, for hot loops: the word is a view into the same text.
std::string_view next_word(std::string_view& line);
/// Splits `line` at `delimiter` into at most `count` fields, honouring double quotes (the quotes
/// are removed, a delimiter inside them is text); with a count of 0, to the end of the line. A
/// blank line has no fields; "a," has two. Fields are trimmed. The last field
/// does not hold the rest of a longer line: it is cut at the next delimiter.
std::vector<std::string> split_fields(std::string_view line, int count = 0, char delimiter = ',');
/// Splits a comma list of positive numbers ("1,2,4,8") into `items` (the texts as they stand,
/// counted from 0). Returns 0 with `count` the number of items, also for an empty (or blank) text,
/// which leaves `items` as it was. At the first item that isn't numeric or isn't above 0 it
/// returns -1 with `count` the items before it, and, unless `quiet`, first shows
/// "The weighting definitions are not valid for weight " and the item's number from 0.
int parse_number_list(Dialogue& dialogue, bool quiet, std::string_view text, int& count,
                      std::vector<std::string>& items);
/// The weight list of the weighting model ("16,8,4,2,1"): each part must read above 0 by
/// parse_number_prefix; parts are kept as texts in `values` and counted in `count`; an empty (or
/// blank) text gives a count of 0. Returns 0, or -1 at the first bad part, with the message "The weighting
/// definitions are not valid for weight " and the part's number from 1 when a dialogue is given.
int parse_weight_list(Dialogue* dialogue, std::string_view text, std::vector<std::string>& values, int& count);

/// Pads on the left to `width`; a longer text keeps its first `width` characters.
std::string right_justify(std::string_view text, int width);

}  // namespace invsetup
