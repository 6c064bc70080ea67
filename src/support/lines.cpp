// src/support/lines.cpp - line readers for any line end, and the buffered CR LF writer.
#include "support/lines.h"

#include <stdexcept>

namespace invsetup {

namespace {

constexpr std::size_t longest_line = 10240;
constexpr std::size_t write_buffer_size = 1 << 20;

bool is_blank(char c) { return c == ' ' || c == '\t'; }

bool is_blank_line(const std::string& line) {
    for (char c : line)
        if (!is_blank(c)) return false;
    return true;
}

void trim_in_place(std::string& line) {
    std::size_t end = line.size();
    while (end > 0 && is_blank(line[end - 1])) --end;
    line.erase(end);
    std::size_t begin = 0;
    while (begin < line.size() && is_blank(line[begin])) ++begin;
    line.erase(0, begin);
}

}  // namespace

bool read_clean_line(std::istream& in, std::string& line) {
    line.clear();
    std::streambuf* buffer = in.rdbuf();
    if (!in || buffer == nullptr) return false;
    using traits = std::char_traits<char>;
    // Straight from the buffer: no sentry per character, which counts on files of millions of lines.
    // Kept characters gather in a small block that goes to `line` in one append.
    char block[256];
    std::size_t held = 0;
    std::size_t kept = 0;
    bool read_any = false;
    for (;;) {
        const int c = buffer->sbumpc();
        if (traits::eq_int_type(c, traits::eof())) {
            line.append(block, held);
            in.setstate(read_any ? std::ios::eofbit : std::ios::eofbit | std::ios::failbit);
            return read_any;
        }
        read_any = true;
        if (c == '\n' || c == '\r') {
            // CR LF is one line end; a lone CR ends the line and leaves the next byte unread.
            if (c == '\r' && buffer->sgetc() == '\n') buffer->sbumpc();
            line.append(block, held);
            return true;
        }
        if (c == '\t')
            block[held++] = ' ';
        else if (c >= 32 && c <= 126)
            block[held++] = static_cast<char>(c);
        else
            continue;
        if (++kept >= longest_line) {
            line.append(block, held);
            return true;
        }
        if (held == sizeof block) {
            line.append(block, held);
            held = 0;
        }
    }
}

bool read_raw_line(std::istream& in, std::string& line) { return read_clean_line(in, line); }

bool read_nonblank_line(std::istream& in, std::string& line) {
    while (read_raw_line(in, line))
        if (!is_blank_line(line)) return true;
    return false;
}

bool read_uncommented_line(std::istream& in, std::string& line) {
    while (read_raw_line(in, line)) {
        trim_in_place(line);
        if (!line.empty() && line[0] != '!' && line[0] != '#') return true;
    }
    line.clear();
    return false;
}

bool read_line(std::istream& in, std::string& line) {
    if (!std::getline(in, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

void write_text_lines(const std::filesystem::path& path, const std::vector<std::string>& lines) {
    LineWriter writer(path);
    for (const std::string& line : lines) writer.write_line(line);
    writer.close();
}

LineWriter::LineWriter(const std::filesystem::path& path) : path_(path) {
#ifdef _WIN32
    file_ = _wfopen(path.c_str(), L"wb");
#else
    file_ = std::fopen(path.c_str(), "wb");
#endif
    if (file_ == nullptr) throw std::runtime_error("cannot create " + path.string());
    buffer_.reserve(write_buffer_size + 1024);
}

LineWriter::~LineWriter() {
    if (file_ == nullptr) return;
    try {
        flush_buffer();
    } catch (...) {  // close() is where a fault is reported; a destructor must not throw
    }
    std::fclose(file_);
}

void LineWriter::write_line(std::string_view line) {
    write(line);
    end_line();
}

void LineWriter::write(std::string_view text) {
    if (file_ == nullptr) throw std::runtime_error("cannot write " + path_.string());
    buffer_.append(text);
    if (buffer_.size() >= write_buffer_size) flush_buffer();
}

void LineWriter::end_line() { write("\r\n"); }

void LineWriter::close() {
    if (file_ == nullptr) return;
    std::FILE* file = file_;
    bool failed = false;
    try {
        flush_buffer();
    } catch (...) {
        failed = true;
    }
    file_ = nullptr;
    if (std::fclose(file) != 0) failed = true;
    if (failed) throw std::runtime_error("cannot write " + path_.string());
}

void LineWriter::flush_buffer() {
    if (buffer_.empty() || file_ == nullptr) return;
    const std::size_t written = std::fwrite(buffer_.data(), 1, buffer_.size(), file_);
    const bool complete = written == buffer_.size();
    buffer_.clear();
    if (!complete) throw std::runtime_error("cannot write " + path_.string());
}

}  // namespace invsetup
