// The MPS reader. Each data line is split at blanks; a line whose names hold blanks does not split
// into the expected fields and is read by the columns of the fixed form instead.
#include "methods/mps.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace ak_internal {
namespace {

enum section_t { s_none, s_name, s_rows, s_columns, s_rhs, s_ranges, s_bounds, s_objsense, s_end };

struct row_t {
    char type;  // 'N', 'L', 'G', 'E'
    double rhs = 0, range = 0;
    bool has_range = false;
};

struct reader_t {
    std::vector<row_t> rows;
    std::map<std::string, int> row_index, col_index;
    std::vector<std::string> col_names;
    std::vector<std::map<int, double>> cols;  // row -> value, for each column
    std::vector<double> lb, ub;
    int objective = -1;
    bool maximise = false;
    int line = 0;
    std::string why;

    int fail(const std::string& text) {
        why = text;
        return 0;
    }
};

std::vector<std::string> split(const std::string& s) {
    std::vector<std::string> t;
    std::size_t k = 0;
    while (k < s.size()) {
        while (k < s.size() && std::isspace(static_cast<unsigned char>(s[k]))) ++k;
        std::size_t e = k;
        while (e < s.size() && !std::isspace(static_cast<unsigned char>(s[e]))) ++e;
        if (e > k) t.push_back(s.substr(k, e - k));
        k = e;
    }
    return t;
}

std::string trim(const std::string& s) {
    std::size_t a = 0, b = s.size();
    while (a < b && std::isspace(static_cast<unsigned char>(s[a]))) ++a;
    while (b > a && std::isspace(static_cast<unsigned char>(s[b - 1]))) --b;
    return s.substr(a, b - a);
}

// The six fields of the fixed form: columns 2-3, 5-12, 15-22, 25-36, 40-47, 50-61.
std::vector<std::string> fixed_fields(const std::string& s) {
    static const int start[6] = {1, 4, 14, 24, 39, 49}, len[6] = {2, 8, 8, 12, 8, 12};
    std::vector<std::string> f;
    for (int k = 0; k < 6; ++k) f.push_back(static_cast<int>(s.size()) > start[k] ? trim(s.substr(start[k], len[k])) : "");
    while (!f.empty() && f.back().empty()) f.pop_back();
    return f;
}

bool number(const std::string& s, double* v) {
    if (s.empty()) return false;
    char* end = nullptr;
    *v = std::strtod(s.c_str(), &end);
    return end && *end == '\0';
}

int find(const std::map<std::string, int>& m, const std::string& k) {
    auto it = m.find(k);
    return it == m.end() ? -1 : it->second;
}

bool rows_line(reader_t& r, const std::vector<std::string>& t) {
    if (t.size() != 2) return r.fail("a row needs a type and a name");
    const char type = static_cast<char>(std::toupper(static_cast<unsigned char>(t[0][0])));
    if (t[0].size() != 1 || std::strchr("NLGE", type) == nullptr) return r.fail("unknown row type '" + t[0] + "'");
    if (find(r.row_index, t[1]) >= 0) return r.fail("row '" + t[1] + "' defined twice");
    if (type == 'N' && r.objective < 0) r.objective = static_cast<int>(r.rows.size());
    r.row_index[t[1]] = static_cast<int>(r.rows.size());
    row_t row;
    row.type = type;
    r.rows.push_back(row);
    return true;
}

// Pairs of row name and value from t[first] on, handed to put(row, value).
template <class F>
bool pairs(reader_t& r, const std::vector<std::string>& t, std::size_t first, F put) {
    if (t.size() <= first || (t.size() - first) % 2 != 0) return r.fail("expected pairs of row name and value");
    for (std::size_t k = first; k + 1 < t.size(); k += 2) {
        const int row = find(r.row_index, t[k]);
        if (row < 0) return r.fail("unknown row '" + t[k] + "'");
        double v;
        if (!number(t[k + 1], &v)) return r.fail("bad number '" + t[k + 1] + "'");
        put(row, v);
    }
    return true;
}

bool columns_line(reader_t& r, const std::vector<std::string>& t) {
    if (t.size() >= 3 && (t[1] == "'MARKER'" || t[2] == "'MARKER'")) return true;  // integer markers
    if (t.size() != 3 && t.size() != 5) return r.fail("a column line needs a name and one or two pairs");
    int col = find(r.col_index, t[0]);
    if (col < 0) {
        col = static_cast<int>(r.cols.size());
        r.col_index[t[0]] = col;
        r.col_names.push_back(t[0]);
        r.cols.emplace_back();
        r.lb.push_back(0);
        r.ub.push_back(INFINITY);
    }
    return pairs(r, t, 1, [&](int row, double v) {
        if (v != 0) r.cols[col][row] = v;
    });
}

// RHS and RANGES lines: the set name may be left out, which leaves an even count of fields.
bool set_line(reader_t& r, const std::vector<std::string>& t, bool range) {
    const std::size_t first = t.size() % 2 == 0 ? 0 : 1;
    return pairs(r, t, first, [&](int row, double v) {
        if (range) {
            r.rows[row].range = v;
            r.rows[row].has_range = true;
        } else {
            r.rows[row].rhs = v;
        }
    });
}

bool bounds_line(reader_t& r, std::vector<std::string> t) {
    if (t.empty()) return r.fail("empty bound");
    std::string type = t[0];
    for (char& ch : type) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    const bool valued = type == "UP" || type == "LO" || type == "FX" || type == "LI" || type == "UI" || type == "SC";
    const bool bare = type == "FR" || type == "MI" || type == "PL" || type == "BV";
    if (!valued && !bare) return r.fail("unknown bound type '" + t[0] + "'");
    // Fields: type, [set], column, [value].
    std::size_t expect = valued ? 4 : 3;
    if (type == "SC" && t.size() == 3) expect = 3;  // a semi-continuous bound may leave out its value
    if (t.size() == expect - 1) t.insert(t.begin() + 1, "");
    if (t.size() != expect && !(bare && t.size() == 4)) return r.fail("wrong number of fields in a bound");
    const int col = find(r.col_index, t[2]);
    if (col < 0) return r.fail("unknown column '" + t[2] + "'");
    double v = 0;
    if (valued && t.size() > 3 && !number(t[3], &v)) return r.fail("bad number '" + t[3] + "'");
    double& lo = r.lb[col];
    double& hi = r.ub[col];
    if (type == "UP" || type == "UI" || (type == "SC" && t.size() > 3)) {
        hi = v;
        if (v < 0 && lo == 0) lo = -INFINITY;  // an upper bound below zero frees the lower one
    } else if (type == "LO" || type == "LI") {
        lo = v;
    } else if (type == "FX") {
        lo = hi = v;
    } else if (type == "FR") {
        lo = -INFINITY;
        hi = INFINITY;
    } else if (type == "MI") {
        lo = -INFINITY;
    } else if (type == "PL") {
        hi = INFINITY;
    } else if (type == "BV") {
        lo = 0;
        hi = 1;
    }
    return true;
}

// Expected field counts of a line in each section, for the choice between blank-split and columns.
bool fits(section_t s, std::size_t k) {
    switch (s) {
        case s_rows: return k == 2;
        case s_columns: return k == 3 || k == 5;
        case s_rhs:
        case s_ranges: return k >= 2 && k <= 5;
        case s_bounds: return k >= 2 && k <= 4;
        default: return true;
    }
}

bool data_line(reader_t& r, section_t s, const std::string& text) {
    std::vector<std::string> t = split(text);
    if (!fits(s, t.size())) {
        t = fixed_fields(text);
        // Only rows and bounds have a type in the first field.
        if (s != s_rows && s != s_bounds && !t.empty()) t.erase(t.begin());
    }
    switch (s) {
        case s_rows: return rows_line(r, t);
        case s_columns: return columns_line(r, t);
        case s_rhs: return set_line(r, t, false);
        case s_ranges: return set_line(r, t, true);
        case s_bounds: return bounds_line(r, t);
        case s_objsense:
            if (!t.empty() && (t[0] == "MAX" || t[0] == "MAXIMIZE")) r.maximise = true;
            return true;
        case s_name: return true;
        default: return r.fail("data before the first section");
    }
}

section_t section_word(const std::string& word) {
    if (word == "NAME") return s_name;
    if (word == "ROWS") return s_rows;
    if (word == "COLUMNS") return s_columns;
    if (word == "RHS") return s_rhs;
    if (word == "RANGES") return s_ranges;
    if (word == "BOUNDS") return s_bounds;
    if (word == "OBJSENSE") return s_objsense;
    if (word == "ENDATA" || word == "ENDDATA") return s_end;
    return s_none;
}

// The rows as constraints x: equalities first, then the inequalities written as "<=".
void convert(const reader_t& r, mps_problem_t& p) {
    struct out_t {
        int row;
        double sign, rhs;
    };
    std::vector<out_t> eq, le;
    for (int i = 0; i < static_cast<int>(r.rows.size()); ++i) {
        const row_t& w = r.rows[i];
        const double R = std::fabs(w.range);
        switch (w.type) {
            case 'N': break;
            case 'E':
                if (!w.has_range || w.range == 0) {
                    eq.push_back({i, 1, w.rhs});
                } else if (w.range > 0) {
                    le.push_back({i, -1, -w.rhs});
                    le.push_back({i, 1, w.rhs + R});
                } else {
                    le.push_back({i, -1, -(w.rhs - R)});
                    le.push_back({i, 1, w.rhs});
                }
                break;
            case 'L':
                le.push_back({i, 1, w.rhs});
                if (w.has_range) le.push_back({i, -1, -(w.rhs - R)});
                break;
            case 'G':
                le.push_back({i, -1, -w.rhs});
                if (w.has_range) le.push_back({i, 1, w.rhs + R});
                break;
        }
    }
    p.n = static_cast<int>(r.cols.size());
    p.neq = static_cast<int>(eq.size());
    p.m = p.neq + static_cast<int>(le.size());
    p.c.assign(p.n, 0);
    p.a.assign(static_cast<long>(p.m) * p.n, 0);
    p.b.assign(p.m, 0);
    std::vector<out_t> all(eq);
    all.insert(all.end(), le.begin(), le.end());
    std::vector<std::vector<int>> where(r.rows.size());
    for (int k = 0; k < p.m; ++k) {
        where[all[k].row].push_back(k);
        p.b[k] = all[k].rhs;
    }
    for (int j = 0; j < p.n; ++j)
        for (const auto& [row, v] : r.cols[j]) {
            if (row == r.objective) p.c[j] = r.maximise ? -v : v;
            for (int k : where[row]) p.a[k + static_cast<long>(j) * p.m] = all[k].sign * v;
        }
    p.lb = r.lb;
    p.ub = r.ub;
}

}  // namespace

int mps_read(const char* file, mps_problem_t& p, int* line, std::string& why) {
    FILE* fp = std::fopen(file, "r");
    if (!fp) return 8;
    reader_t r;
    section_t s = s_none;
    bool ended = false;
    char buffer[4096];
    int code = 1;
    while (std::fgets(buffer, sizeof buffer, fp)) {
        ++r.line;
        std::string text(buffer);
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        if (text.empty() || text[0] == '*' || trim(text).empty()) continue;
        if (!std::isspace(static_cast<unsigned char>(text[0]))) {
            std::vector<std::string> t = split(text);
            const section_t next = section_word(t[0]);
            if (next == s_none) {
                r.why = "unknown section '" + t[0] + "'";
                code = 9;
                break;
            }
            s = next;
            if (s == s_name) p.name = t.size() > 1 ? t[1] : "";
            if (s == s_objsense && t.size() > 1) data_line(r, s, text.substr(t[0].size()));
            if (s == s_end) {
                ended = true;
                break;
            }
            continue;
        }
        if (!data_line(r, s, text)) {
            code = 9;
            break;
        }
    }
    std::fclose(fp);
    if (code == 1 && !ended) {
        r.why = "the file ends without ENDATA";
        code = 9;
    }
    if (code == 1 && r.objective < 0) {
        r.why = "no objective row (type N)";
        code = 9;
    }
    *line = r.line;
    why = r.why;
    if (code == 1) convert(r, p);
    return code;
}

}  // namespace ak_internal
