// qnum_mkcatalog: compiles the readable message-catalogue sources into qnumerr.bin and the
// C++ header of named error codes.
//
//   qnum_mkcatalog [--swap] --out qnumerr.bin [--header errors.hpp] source.msg...
//
// Source format: '#' starts a comment line; an entry is "code NAME template" on one line,
// and a line that begins with white space continues the previous template (joined with one
// blank). NAME is the symbolic name printed in reports (QNUM_...); the header declares
// qnum::err::<name in lower case, without QNUM_> = code.
//
// Binary layout (16-bit words, in the writer's byte order, or swapped with --swap):
//   0 magic 0x72F8, 2 reserved, 4 count N, 6 reserved, 8 size part A, 10 size part B,
//   12 block shift s, 14 N codes ascending (low 16 bits of code mod 100000), then N + 1
//   block indices; records start at 4N + 15 rounded up to a multiple of 2^s. Record i
//   holds "template\0name\0" at data start + block[i] * 2^s. Readers take one block more
//   than the span of a record, so the file ends with one block of padding.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Entry {
    long code;
    std::string name;
    std::string text;
    std::string where;
};

[[noreturn]] void fail(const std::string& why) {
    std::fprintf(stderr, "qnum_mkcatalog: %s\n", why.c_str());
    std::exit(1);
}

std::string trim(const std::string& s) {
    std::size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string::npos) return "";
    std::size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

void read_source(const std::string& path, std::vector<Entry>& out) {
    std::ifstream in(path);
    if (!in) fail("cannot open " + path);
    std::string line;
    int lineno = 0;
    while (std::getline(in, line)) {
        ++lineno;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (trim(line).empty() || trim(line)[0] == '#') continue;
        std::string where = path + ":" + std::to_string(lineno);
        if (line[0] == ' ' || line[0] == '\t') {
            if (out.empty()) fail(where + ": continuation line before any entry");
            out.back().text += " " + trim(line);
            continue;
        }
        std::istringstream fields(line);
        Entry e;
        std::string code;
        fields >> code >> e.name;
        char* end = nullptr;
        e.code = std::strtol(code.c_str(), &end, 10);
        if (code.empty() || *end != '\0' || e.code <= 0) fail(where + ": bad code '" + code + "'");
        if (e.name.rfind("QNUM_", 0) != 0 || e.name.size() <= 5)
            fail(where + ": name must start with QNUM_");
        for (char c : e.name)
            if (!(std::isupper(static_cast<unsigned char>(c)) || std::isdigit(static_cast<unsigned char>(c)) || c == '_'))
                fail(where + ": bad name " + e.name);
        std::string rest;
        std::getline(fields, rest);
        e.text = trim(rest);
        e.where = where;
        out.push_back(e);
    }
}

void put16(std::vector<unsigned char>& b, std::size_t at, unsigned v, bool swap) {
    unsigned char lo = v & 0xFF, hi = (v >> 8) & 0xFF;
    // The writer's own order is little-endian on the machines we build on; --swap writes the
    // other order so that readers' byte-swap detection can be exercised.
    b[at] = swap ? hi : lo;
    b[at + 1] = swap ? lo : hi;
}

}  // namespace

int main(int argc, char** argv) {
    bool swap = false;
    std::string out_path, header_path;
    std::vector<std::string> sources;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--swap") swap = true;
        else if (a == "--out" && i + 1 < argc) out_path = argv[++i];
        else if (a == "--header" && i + 1 < argc) header_path = argv[++i];
        else if (!a.empty() && a[0] == '-') fail("unknown flag " + a);
        else sources.push_back(a);
    }
    if (out_path.empty() || sources.empty())
        fail("usage: qnum_mkcatalog [--swap] --out FILE [--header FILE] SOURCE...");
    std::sort(sources.begin(), sources.end());

    std::vector<Entry> entries;
    for (const auto& s : sources) read_source(s, entries);

    std::map<unsigned, const Entry*> by_key;
    std::set<std::string> names;
    for (const auto& e : entries) {
        unsigned key = static_cast<unsigned>(e.code % 100000) & 0xFFFF;
        if (by_key.count(key))
            fail(e.where + ": code " + std::to_string(e.code) + " collides with " + by_key[key]->where);
        if (!names.insert(e.name).second) fail(e.where + ": name " + e.name + " used twice");
        by_key[key] = &e;
    }
    const std::size_t n = by_key.size();
    if (n == 0 || n > 30000) fail("the catalogue must hold 1 to 30000 messages");

    std::vector<std::string> records;
    std::size_t total = 0, longest_text = 0, longest_name = 0;
    for (const auto& [key, e] : by_key) {
        records.push_back(e->text + '\0' + e->name + '\0');
        total += records.back().size();
        longest_text = std::max(longest_text, e->text.size());
        longest_name = std::max(longest_name, e->name.size());
    }
    unsigned shift = 1;
    while (((total + n * (1u << shift)) >> shift) + 2 > 0xFFFF) ++shift;
    const std::size_t block = std::size_t{1} << shift;
    const std::size_t data_start = ((4 * n + 15) + block - 1) / block * block;

    std::vector<unsigned> blocks;
    std::vector<unsigned char> data;
    for (const auto& r : records) {
        blocks.push_back(static_cast<unsigned>(data.size() / block));
        data.insert(data.end(), r.begin(), r.end());
        data.resize((data.size() + block - 1) / block * block, 0);
    }
    blocks.push_back(static_cast<unsigned>(data.size() / block));
    data.resize(data.size() + block, 0);  // the reader's extra block after the last record

    std::size_t largest_read = 0;
    for (std::size_t i = 0; i < n; ++i)
        largest_read = std::max(largest_read, (blocks[i + 1] - blocks[i] + 1) * block);
    unsigned part_a = static_cast<unsigned>(longest_text + 1);
    unsigned part_b = static_cast<unsigned>(std::max(longest_name + 1, largest_read > part_a + 2 ? largest_read - part_a - 2 : 0));

    std::vector<unsigned char> file(data_start, 0);
    put16(file, 0, 0x72F8, swap);
    put16(file, 4, static_cast<unsigned>(n), swap);
    put16(file, 8, part_a, swap);
    put16(file, 10, part_b, swap);
    put16(file, 12, shift, swap);
    std::size_t at = 14;
    for (const auto& [key, e] : by_key) { put16(file, at, key, swap); at += 2; }
    for (unsigned b : blocks) { put16(file, at, b, swap); at += 2; }
    file.insert(file.end(), data.begin(), data.end());

    std::FILE* f = std::fopen(out_path.c_str(), "wb");
    if (!f || std::fwrite(file.data(), 1, file.size(), f) != file.size() || std::fclose(f) != 0)
        fail("cannot write " + out_path);

    if (!header_path.empty()) {
        std::ostringstream h;
        h << "// Generated by tools/mkcatalog (qnum_mkcatalog) from data/messages/*.msg; edit those.\n"
          << "#pragma once\n\nnamespace qnum::err {\n";
        std::vector<const Entry*> sorted;
        for (const auto& e : entries) sorted.push_back(&e);
        std::sort(sorted.begin(), sorted.end(), [](auto a, auto b) { return a->code < b->code; });
        for (const Entry* e : sorted) {
            std::string id = e->name.substr(5);
            std::transform(id.begin(), id.end(), id.begin(), [](unsigned char c) { return std::tolower(c); });
            h << "inline constexpr int " << id << " = " << e->code << ";\n";
        }
        h << "}  // namespace qnum::err\n";
        // Rewrite only on change, so that a catalogue edit that keeps the codes rebuilds nothing.
        std::ifstream old(header_path);
        std::stringstream old_text;
        old_text << old.rdbuf();
        if (old_text.str() != h.str()) {
            std::ofstream out(header_path);
            out << h.str();
            if (!out) fail("cannot write " + header_path);
        }
    }
    return 0;
}
