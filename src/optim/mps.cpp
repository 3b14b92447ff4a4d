// Reader of fixed-column MPS files: sections, rows, columns with their integer markers,
// right-hand sides, ranges, bounds and quadratic objective terms, packed at the end into one
// allocation that the caller frees.
#include "optim/mps.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "optim/mps_util.hpp"

namespace qnum::optim {
namespace {

using frame::Int;
using frame::Str;
using frame::Type;

// Section states in their file order; the order tests compare them.
enum Section : int {
    none,
    name_section,
    rows_section,
    columns_section,
    rhs_section,
    ranges_section,
    bounds_section,
    quadratic_section,
    end_section,
};

struct Keyword {
    const char* text;
    Section section;
};
constexpr Keyword keywords[] = {
    {"NAME", name_section},          {"ROWS", rows_section},         {"COLUMNS", columns_section},
    {"RHS", rhs_section},            {"RANGES", ranges_section},     {"BOUNDS", bounds_section},
    {"ENDATA", end_section},         {"QUADRATIC", quadratic_section}, {"HESSIAN", quadratic_section},
    {"QUADS", quadratic_section},    {"QUADOBJ", quadratic_section}, {"QSECTION", quadratic_section},
    {"QMATRIX", quadratic_section},
};

// A trimmed field of the current line: columns first..last, counted from 1.
struct Field {
    const char* p;
    std::size_t n;
    bool empty() const { return n == 0; }
    NameKey key() const { return pack_name(p, n); }
    bool is(const char* s) const { return std::strlen(s) == n && std::memcmp(p, s, n) == 0; }
};

Field field(const char* line, int first, int last) {
    const char* b = line + first - 1;
    const char* e = line + last;
    while (b < e && *b == ' ') ++b;
    while (e > b && e[-1] == ' ') --e;
    return {b, static_cast<std::size_t>(e - b)};
}

// A set (right-hand side, ranges, bounds) is the one the caller named, or else the first one met.
struct SetChoice {
    NameKey key = 0;
    bool requested = false, chosen = false, met = false;
    char name[9] = {};

    void request(const char* s) {
        std::size_t n = std::strlen(s);
        Field f = field(s, 1, static_cast<int>(std::min<std::size_t>(n, 8)));
        key = f.key();
        requested = chosen = true;
        unpack_name(key, name);
    }
    // True when a line of the set `f` is to be used.
    bool take(Field f) {
        if (!chosen) {
            key = f.key();
            chosen = true;
            unpack_name(key, name);
        }
        const bool same = f.key() == key;
        met |= same;
        return same;
    }
};

class Reader {
public:
    Reader(std::FILE* f) : lines_(f) {}

    double pinf = 1.0e30, ninf = -1.0e30;
    SetChoice objective, rhs, ranges, bounds;

    Qnum_d_mps* read();

private:
    bool fail(int code) {
        frame::raise(Type::Fatal, code, Int{line_no_});
        return false;
    }
    bool fail(int code, Field text) {
        char buf[LineReader::width + 1];
        std::memcpy(buf, text.p, text.n);
        buf[text.n] = '\0';
        frame::raise(Type::Fatal, code, Str{buf}, Int{line_no_});
        qnum_e1stl(1, "");  // the slot must not point at this frame's text after return
        return false;
    }
    bool no_memory(const char* what, std::size_t n) {
        frame::raise(Type::Terminal, err::no_memory, Str{what}, Int{static_cast<int>(n)});
        return false;
    }

    bool header();
    bool close_section();
    bool close_rows();
    bool close_columns();
    bool data_line();
    bool row_line();
    bool column_line();
    bool rhs_or_ranges_line(bool is_rhs);
    bool bound_line();
    bool quadratic_line();
    bool value(Field f, double& v) { return parse_number(f.p, f.n, v) || fail(err::mps_bad_number, f); }
    // The constraint index of the row named f (-1: the objective), or false after error 8107.
    bool row(Field f, int& index) {
        const int r = row_names_.find(f.key());
        if (r == -1) return fail(err::mps_unknown_row, f);
        index = r == -2 ? -1 : r;
        return true;
    }
    // Pair k of a COLUMNS, RHS or RANGES line (0: the row name at column 15 and its value at
    // 25, 1: at 40 and 50): false after an error; a blank row name makes no pair.
    bool pair(int k, bool& blank, int& index, double& v) {
        const Field r = field(line_, k == 0 ? 15 : 40, k == 0 ? 22 : 47);
        blank = r.empty();
        return blank || (row(r, index) && value(field(line_, k == 0 ? 25 : 50, k == 0 ? 36 : 61), v));
    }
    bool column(Field f, int& index) {
        index = column_names_.find(f.key());
        return index >= 0 || fail(err::mps_unknown_column, f);
    }
    Qnum_d_mps* pack();

    LineReader lines_;
    char line_[LineReader::width + 1];
    int line_no_ = 0;
    Section section_ = none;
    char name_[58] = {};

    // Rows in file order, the objective among them until the ROWS section closes.
    NameTable row_names_;
    Grow<NameKey> row_keys_;
    Grow<char> row_types_;
    Grow<int> row_map_;  // file row -> constraint row, -1 for the objective
    int objective_row_ = -1;
    int nrows_ = 0;
    Grow<double> rhs_, ranges_;
    double objective_constant_ = 0;

    NameTable column_names_;
    Grow<NameKey> column_keys_;
    Grow<double> objective_;
    Grow<int> integer_;
    int current_column_ = -1;
    bool in_integer_run_ = false;
    Grow<double> lower_, upper_;

    Grow<int> matrix_row_, matrix_column_;
    Grow<double> matrix_value_;
    Grow<int> quad_row_, quad_column_;
    Grow<double> quad_value_;
};

Qnum_d_mps* Reader::read() {
    if (!lines_.open()) {
        no_memory("buffer", 1 << 16);
        return nullptr;
    }
    while (lines_.next(line_)) {
        ++line_no_;
        const char c = line_[0];
        if (c == '*' || c == '$') continue;
        bool ok;
        if (c != ' ') {
            ok = header();
            if (ok && section_ == end_section) return pack();
        } else {
            Field all = field(line_, 1, LineReader::width);
            if (all.empty()) continue;  // a blank line says nothing
            ok = data_line();
        }
        if (!ok) return nullptr;
    }
    fail(err::mps_no_endata);
    return nullptr;
}

bool Reader::header() {
    // The keyword is the first word in columns 1-8, so a name may start as early as column 6.
    Field word = field(line_, 1, 8);
    if (const void* blank = std::memchr(word.p, ' ', word.n)) {
        word.n = static_cast<std::size_t>(static_cast<const char*>(blank) - word.p);
    }
    Section next = none;
    for (const Keyword& k : keywords) {
        if (word.is(k.text)) next = k.section;
    }
    if (next == none) return fail(err::mps_unknown_section, word);
    if (next != quadratic_section) {
        const bool in_order = next == section_ + 1 || (next >= bounds_section && next > section_);
        if (!in_order) return fail(err::mps_section_order, word);
    }
    if (!close_section()) return false;
    section_ = next;
    if (next == name_section) {
        Field name = field(line_, 6, LineReader::width);
        std::memcpy(name_, name.p, name.n);
        name_[name.n] = '\0';
    }
    return true;
}

bool Reader::close_section() {
    if (section_ == rows_section) return close_rows();
    if (section_ == columns_section) return close_columns();
    return true;
}

// The objective is the requested N row, or else the first one; every other row becomes a
// constraint row in file order.
bool Reader::close_rows() {
    const int all = static_cast<int>(row_keys_.size());
    objective_row_ = -1;
    if (objective.requested) {
        const int r = row_names_.find(objective.key);
        if (r >= 0 && row_types_[r] == 'N') objective_row_ = r;
    }
    objective.met = objective_row_ >= 0;
    for (int r = 0; r < all && objective_row_ < 0; ++r) {
        if (row_types_[r] == 'N') objective_row_ = r;
    }
    if (objective_row_ >= 0) {
        objective.chosen = true;
        unpack_name(row_keys_[objective_row_], objective.name);
    }
    if (!row_map_.reserve(all)) return no_memory("nrows", all);
    for (int r = 0; r < all; ++r) {
        row_map_.push(r == objective_row_ ? -1 : nrows_);
        if (r != objective_row_) ++nrows_;
    }
    if (!rhs_.assign(nrows_, 0) || !ranges_.assign(nrows_, 0)) return no_memory("nrows", all);
    row_names_.remap(row_map_.data());
    return true;
}

bool Reader::close_columns() {
    const std::size_t n = column_keys_.size();
    return (lower_.assign(n, 0) && upper_.assign(n, pinf)) || no_memory("ncolumns", n);
}

bool Reader::data_line() {
    switch (section_) {
    case none:
    case name_section: return fail(err::mps_data_before_rows);
    case rows_section: return row_line();
    case columns_section: return column_line();
    case rhs_section: return rhs_or_ranges_line(true);
    case ranges_section: return rhs_or_ranges_line(false);
    case bounds_section: return bound_line();
    default: return quadratic_line();
    }
}

bool Reader::row_line() {
    Field type = field(line_, 2, 3);
    const char t = type.n == 1 ? static_cast<char>(type.p[0] & ~0x20) : 0;
    if (t != 'N' && t != 'E' && t != 'L' && t != 'G') return fail(err::mps_unknown_row_type, type);
    Field name = field(line_, 5, 12);
    const int index = static_cast<int>(row_keys_.size());
    const int old = row_names_.insert(name.key(), index);
    if (old == -2) return no_memory("nrows", index);
    if (old >= 0) return fail(err::mps_duplicate_name, name);
    if (!row_keys_.push(name.key()) || !row_types_.push(t)) return no_memory("nrows", index);
    return true;
}

// A '$' that opens the name field at column 15 or 40 turns the rest of the line into a comment.
int pairs_on_line(const char* line) {
    if (line[14] == '$') return 0;
    if (line[39] == '$') return 1;
    return 2;
}

bool Reader::column_line() {
    Field name = field(line_, 5, 12);
    Field first_row = field(line_, 15, 22);
    if (first_row.is("'MARKER'")) {
        // An integer run opens at an 'INTORG' marker and closes at an 'INTEND' marker, written
        // in any of the later fields.
        for (int col : {25, 40, 50}) {
            Field f = field(line_, col, col == 25 ? 36 : col + 11);
            if (f.is("'INTORG'") || f.is("'INTEND'")) {
                in_integer_run_ = f.is("'INTORG'");
                return true;
            }
        }
        return fail(err::mps_bad_marker, name);
    }
    if (!name.empty() && (current_column_ < 0 || name.key() != column_keys_[current_column_])) {
        const int index = static_cast<int>(column_keys_.size());
        const int old = column_names_.insert(name.key(), index);
        if (old == -2) return no_memory("ncolumns", index);
        if (old >= 0) return fail(err::mps_duplicate_name, name);
        if (!column_keys_.push(name.key()) || !objective_.push(0) ||
            !integer_.push(in_integer_run_ ? 1 : 0)) {
            return no_memory("ncolumns", index);
        }
        current_column_ = index;
    } else if (current_column_ < 0) {
        // A blank name continues the previous column; there is none yet.
        return fail(err::mps_unknown_column, name);
    }
    const int pairs = pairs_on_line(line_);
    for (int k = 0; k < pairs; ++k) {
        bool blank;
        int index;
        double v;
        if (!pair(k, blank, index, v)) return false;
        if (blank) continue;
        if (index < 0) {
            objective_[current_column_] += v;
        } else if (!matrix_row_.push(index) || !matrix_column_.push(current_column_) ||
                   !matrix_value_.push(v)) {
            return no_memory("nonzeros", matrix_value_.size());
        }
    }
    return true;
}

bool Reader::rhs_or_ranges_line(bool is_rhs) {
    if (!(is_rhs ? rhs : ranges).take(field(line_, 5, 12))) return true;
    const int pairs = pairs_on_line(line_);
    for (int k = 0; k < pairs; ++k) {
        bool blank;
        int index;
        double v;
        if (!pair(k, blank, index, v)) return false;
        if (blank) continue;
        if (index >= 0) {
            (is_rhs ? rhs_ : ranges_)[index] = v;
        } else if (is_rhs) {
            // The objective's right-hand side is minus its constant term: obj - c = rhs.
            objective_constant_ = -v;
        }
    }
    return true;
}

bool Reader::bound_line() {
    static const char types[][3] = {"LO", "UP", "FX", "FR", "MI", "PL", "BV", "UI", "LI", "SC"};
    Field type = field(line_, 2, 3);
    char t[2] = {0, 0};
    if (type.n == 2) {
        t[0] = static_cast<char>(type.p[0] & ~0x20);
        t[1] = static_cast<char>(type.p[1] & ~0x20);
    }
    int kind = -1, k = 0;
    for (const char* name : types) {
        if (t[0] == name[0] && t[1] == name[1]) kind = k;
        ++k;
    }
    if (kind < 0) return fail(err::mps_unknown_bound_type, type);
    if (!bounds.take(field(line_, 5, 12))) return true;
    int j;
    if (!column(field(line_, 15, 22), j)) return false;
    double v = 0;
    const bool needs_value = kind <= 2 || kind >= 7;
    if (needs_value && !value(field(line_, 25, 36), v)) return false;
    switch (kind) {
    case 0: lower_[j] = v; break;                           // LO
    case 7: integer_[j] |= 1; [[fallthrough]];              // UI
    case 1:                                                 // UP
        upper_[j] = v;
        if (v < 0 && lower_[j] == 0) lower_[j] = ninf;
        break;
    case 2: lower_[j] = upper_[j] = v; break;               // FX
    case 3: lower_[j] = ninf; upper_[j] = pinf; break;      // FR
    case 4: lower_[j] = ninf; break;                        // MI
    case 5: upper_[j] = pinf; break;                        // PL
    case 6: lower_[j] = 0; upper_[j] = 1; break;            // BV: binary, but not marked integer
    case 8: lower_[j] = v; integer_[j] |= 1; break;         // LI
    default: upper_[j] = v; break;                          // SC
    }
    return true;
}

bool Reader::quadratic_line() {
    int i, j;
    double v;
    if (!column(field(line_, 5, 12), i) || !column(field(line_, 15, 22), j) ||
        !value(field(line_, 25, 36), v)) {
        return false;
    }
    if (!quad_row_.push(i) || !quad_column_.push(j) || !quad_value_.push(v)) {
        return no_memory("quadratic_nonzeros", quad_value_.size());
    }
    return true;
}

// Aligned room for n elements of T at `offset`; returns the offset where they start.
template <class T>
std::size_t place(std::size_t& offset, std::size_t n) {
    offset = (offset + alignof(T) - 1) / alignof(T) * alignof(T);
    const std::size_t at = offset;
    offset += n * sizeof(T);
    return at;
}

template <class T>
T* copy_to(char* base, std::size_t at, const T* from, std::size_t n) {
    if (n == 0) return nullptr;
    T* to = reinterpret_cast<T*>(base + at);
    std::memcpy(to, from, n * sizeof(T));
    return to;
}

Qnum_d_mps* Reader::pack() {
    // The record, then its arrays, widest elements first, then the names; with the counts
    // bounded by INT_MAX the sum cannot overflow a 64-bit size.
    const std::size_t nz = matrix_value_.size(), nc = column_keys_.size(), nr = nrows_,
                      nq = quad_value_.size();
    std::size_t size = sizeof(Qnum_d_mps);
    const std::size_t at_value = place<double>(size, nz), at_obj = place<double>(size, nc),
                      at_rhs = place<double>(size, nr), at_ranges = place<double>(size, nr),
                      at_lower = place<double>(size, nc), at_upper = place<double>(size, nc),
                      at_qvalue = place<double>(size, nq), at_rname = place<char*>(size, nr),
                      at_cname = place<char*>(size, nc), at_row = place<int>(size, nz),
                      at_col = place<int>(size, nz), at_type = place<int>(size, nr),
                      at_vtype = place<int>(size, nc), at_qrow = place<int>(size, nq),
                      at_qcol = place<int>(size, nq), at_names = place<char>(size, 9 * (nr + nc));
    char* base = static_cast<char*>(std::calloc(1, size));
    if (base == nullptr) {
        frame::raise(Type::Terminal, err::out_of_memory);
        return nullptr;
    }
    Qnum_d_mps* p = reinterpret_cast<Qnum_d_mps*>(base);
    std::memcpy(p->name, name_, sizeof name_);
    p->nrows = nrows_;
    p->ncolumns = static_cast<int>(nc);
    p->nonzeros = static_cast<int>(nz);
    p->matrix_value = copy_to(base, at_value, matrix_value_.data(), nz);
    p->matrix_row = copy_to(base, at_row, matrix_row_.data(), nz);
    p->matrix_column = copy_to(base, at_col, matrix_column_.data(), nz);
    p->objective = copy_to(base, at_obj, objective_.data(), nc);
    p->rhs = copy_to(base, at_rhs, rhs_.data(), nr);
    p->ranges = copy_to(base, at_ranges, ranges_.data(), nr);
    p->lower_bound = copy_to(base, at_lower, lower_.data(), nc);
    p->upper_bound = copy_to(base, at_upper, upper_.data(), nc);
    p->variable_type = copy_to(base, at_vtype, integer_.data(), nc);
    p->quadratic_nonzeros = static_cast<int>(nq);
    p->quadratic_row = copy_to(base, at_qrow, quad_row_.data(), nq);
    p->quadratic_column = copy_to(base, at_qcol, quad_column_.data(), nq);
    p->quadratic_value = copy_to(base, at_qvalue, quad_value_.data(), nq);
    char* names = base + at_names;
    if (nr > 0) {
        p->row_name = reinterpret_cast<char**>(base + at_rname);
        p->row_type = reinterpret_cast<int*>(base + at_type);
    }
    for (std::size_t r = 0, k = 0; r < row_keys_.size(); ++r) {
        if (static_cast<int>(r) == objective_row_) continue;
        p->row_type[k] = row_types_[r];
        p->row_name[k] = names;
        unpack_name(row_keys_[r], names);
        names += 9;
        ++k;
    }
    if (nc > 0) p->column_name = reinterpret_cast<char**>(base + at_cname);
    for (std::size_t j = 0; j < nc; ++j) {
        p->column_name[j] = names;
        unpack_name(column_keys_[j], names);
        names += 9;
    }
    std::memcpy(p->name_objective, objective.name, 9);
    std::memcpy(p->name_rhs, rhs.name, 9);
    std::memcpy(p->name_ranges, ranges.name, 9);
    std::memcpy(p->name_bounds, bounds.name, 9);
    p->positive_infinity = pinf;
    p->negative_infinity = ninf;
    p->objective_constant = objective_constant_;
    return p;
}

// Copies an option's name (at most 8 characters) for the set it selects.
void request(SetChoice& set, const char* s) {
    if (s != nullptr) set.request(s);
}

}  // namespace

Qnum_d_mps* read_mps(const char* filename, frame::Options opt) {
    std::FILE* stream = nullptr;
    const char* names[4] = {};
    double pinf = 1.0e30, ninf = -1.0e30;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_MPS_FILE: stream = opt.get<std::FILE*>(); break;
        case QNUM_MPS_NAME_OBJECTIVE: names[0] = opt.ptr<const char>("name", "QNUM_MPS_NAME_OBJECTIVE"); break;
        case QNUM_MPS_NAME_RHS: names[1] = opt.ptr<const char>("name", "QNUM_MPS_NAME_RHS"); break;
        case QNUM_MPS_NAME_RANGES: names[2] = opt.ptr<const char>("name", "QNUM_MPS_NAME_RANGES"); break;
        case QNUM_MPS_NAME_BOUNDS: names[3] = opt.ptr<const char>("name", "QNUM_MPS_NAME_BOUNDS"); break;
        case QNUM_MPS_POSITIVE_INFINITY: pinf = opt.get<double>(); break;
        case QNUM_MPS_NEGATIVE_INFINITY: ninf = opt.get<double>(); break;
        default: opt.unknown(code);
        }
    }
    if (frame::pending()) return nullptr;
    std::FILE* opened = nullptr;
    if (stream == nullptr) {
        if (filename == nullptr) {
            frame::raise(Type::Terminal, err::mps_no_file);
            return nullptr;
        }
        opened = std::fopen(filename, "rb");
        if (opened == nullptr) {
            frame::raise(Type::Terminal, err::mps_cannot_open, Str{filename});
            return nullptr;
        }
        stream = opened;
    }
    Qnum_d_mps* p;
    {
        Reader reader(stream);
        reader.pinf = pinf;
        reader.ninf = ninf;
        request(reader.objective, names[0]);
        request(reader.rhs, names[1]);
        request(reader.ranges, names[2]);
        request(reader.bounds, names[3]);
        p = reader.read();
        if (p != nullptr) {
            const SetChoice* sets[4] = {&reader.objective, &reader.rhs, &reader.ranges, &reader.bounds};
            const int codes[4] = {err::mps_objective_not_found, err::mps_rhs_not_found,
                                  err::mps_ranges_not_found, err::mps_bounds_not_found};
            for (int k = 0; k < 4; ++k) {
                if (names[k] != nullptr && !sets[k]->met) {
                    frame::raise(Type::Warning, codes[k], Str{names[k]});
                }
            }
        }
    }
    if (opened != nullptr) std::fclose(opened);
    return p;
}

}  // namespace qnum::optim
