// Dates and time. A serial day number counts days from 1 January of year 0 (day 1) on the
// proleptic Gregorian calendar; its fraction is the time of day.
#include "arklib/dates.h"

#include <sys/time.h>
#include <time.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "arklib/builtins.h"
#include "arklib/calling.h"
#include "arklib/cells.h"
#include "arklib/strings.h"

namespace {

const char* const month_names[12] = {"January", "February", "March",     "April",   "May",      "June",
                                     "July",    "August",   "September", "October", "November", "December"};
const char* const day_names[7] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
const int days_before[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

bool leap(double y) { return (std::fmod(y, 4) == 0 && std::fmod(y, 100) != 0) || std::fmod(y, 400) == 0; }

int month_length(double y, int m) {
    static const int len[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return len[m - 1] + (m == 2 && leap(y) ? 1 : 0);
}

// The serial number of a date vector. Months outside 1..12 carry into the year; days, hours,
// minutes and seconds may be fractional or out of range and simply add.
double serial(double y, double mo, double d, double h = 0, double mi = 0, double s = 0) {
    if (!std::isfinite(y) || !std::isfinite(mo)) return std::nan("");
    mo = std::round(mo);  // a fractional month has no length; take the nearest
    const double carry = std::floor((mo - 1) / 12);
    y += carry;
    const int m = static_cast<int>(mo - 12 * carry);
    double days = 365 * y + std::ceil(y / 4) - std::ceil(y / 100) + std::ceil(y / 400) + days_before[m - 1] + d;
    if (m > 2 && leap(y)) days += 1;
    return days + (h + (mi + s / 60) / 60) / 24;
}

// The date vector of a serial number, seconds rounded so that times written as whole seconds come
// back whole.
void civil(double n, double v[6]) {
    if (!std::isfinite(n)) {
        for (int k = 0; k < 6; ++k) v[k] = n;
        return;
    }
    double day = std::floor(n);
    // Microseconds of the day, rounded to a tenth of a millisecond: a serial number of our era
    // holds the time of day only to about ten microseconds.
    long long us = 100 * std::llround((n - day) * 864e6);
    if (us >= 86400000000LL) {
        day += 1;
        us -= 86400000000LL;
    }
    double y = std::floor(day / 365.2425);
    while (serial(y, 1, 1) > day) y -= 1;
    while (serial(y + 1, 1, 1) <= day) y += 1;
    int doy = static_cast<int>(day - serial(y, 1, 1));  // 0-based day of the year
    int m = 1;
    while (m < 12 && doy >= month_length(y, m)) doy -= month_length(y, m++);
    v[0] = y;
    v[1] = m;
    v[2] = doy + 1;
    v[3] = static_cast<double>(us / 3600000000LL);
    v[4] = static_cast<double>(us / 60000000LL % 60);
    v[5] = static_cast<double>(us % 60000000LL) / 1e6;
}

void local_now(double v[6]) {
    timeval tv;
    gettimeofday(&tv, nullptr);
    tm t;
    localtime_r(&tv.tv_sec, &t);
    v[0] = t.tm_year + 1900;
    v[1] = t.tm_mon + 1;
    v[2] = t.tm_mday;
    v[3] = t.tm_hour;
    v[4] = t.tm_min;
    v[5] = t.tm_sec + tv.tv_usec / 1e6;
}

Mm row_of(const double* v, int n) {
    Mm r(0, 0, 0, 1, n, ak_double);
    std::copy(v, v + n, r.addr());
    return r;
}

std::string text_of(const Mm& m) {
    std::string s;
    const int n = m.size();
    s.reserve(n);
    for (int k = 0; k < n; ++k) s += static_cast<char>(m.flags.type == ak_uchar ? static_cast<unsigned char*>(m.pr)[k] : m.addr()[k]);
    return s;
}

// The rows of a char matrix, or the texts of a cell array.
std::vector<std::string> texts_of(const Mm& x) {
    std::vector<std::string> out;
    if (iscell(x)) {
        const Mm* e = static_cast<const Mm*>(x.pr);
        for (int k = 0; k < x.size(); ++k) out.push_back(text_of(e[k]));
        return out;
    }
    const int rows = x.dims[0], cols = x.size() / std::max(1, rows);
    for (int r = 0; r < rows; ++r) {
        std::string s;
        for (int c = 0; c < cols; ++c) s += static_cast<char>(x.addr()[r + c * rows]);
        out.push_back(s);
    }
    return out;
}

// ---- formats ---------------------------------------------------------------------------------------

const char* const numbered_formats[32] = {
    "dd-mmm-yyyy HH:MM:SS", "dd-mmm-yyyy", "mm/dd/yy", "mmm", "m", "mm", "mm/dd", "dd", "ddd", "d", "yyyy",
    "yy", "mmmyy", "HH:MM:SS", "HH:MM:SS PM", "HH:MM", "HH:MM PM", "QQ-YY", "QQ", "dd/mm", "dd/mm/yy",
    "mmm.dd,yyyy HH:MM:SS", "mmm.dd,yyyy", "mm/dd/yyyy", "dd/mm/yyyy", "yy/mm/dd", "yyyy/mm/dd", "QQ-YYYY",
    "mmmyyyy", "yyyy-mm-dd", "yyyymmddTHHMMSS", "yyyy-mm-dd HH:MM:SS"};

// The words a format is made of, longest first at each place.
const char* const format_words[] = {"yyyy", "YYYY", "mmmm", "dddd", "yy", "YY", "mmm", "ddd", "mm", "dd", "HH",
                                    "MM",   "SS",   "FFF",  "AM",   "PM", "QQ", "m",   "d"};

const char* word_at(const std::string& f, std::size_t at) {
    for (const char* w : format_words)
        if (f.compare(at, std::strlen(w), w) == 0) return w;
    return nullptr;
}

std::string format_date(double n, const std::string& f) {
    double v[6];
    civil(n, v);
    const bool twelve = f.find("AM") != std::string::npos || f.find("PM") != std::string::npos;
    const int wd = static_cast<int>(std::fmod(std::fmod(std::floor(n) + 5, 7) + 7, 7));
    const int m = static_cast<int>(v[1]);
    std::string out;
    char buf[32];
    for (std::size_t at = 0; at < f.size();) {
        const char* w = word_at(f, at);
        if (!w) {
            out += f[at++];
            continue;
        }
        at += std::strlen(w);
        const std::string word = w;
        if (word == "yyyy" || word == "YYYY") {
            std::snprintf(buf, sizeof buf, "%04.0f", v[0]);
        } else if (word == "yy" || word == "YY") {
            std::snprintf(buf, sizeof buf, "%02d", static_cast<int>(std::fmod(std::fmod(v[0], 100) + 100, 100)));
        } else if (word == "mmmm") {
            std::snprintf(buf, sizeof buf, "%s", month_names[m - 1]);
        } else if (word == "mmm") {
            std::snprintf(buf, sizeof buf, "%.3s", month_names[m - 1]);
        } else if (word == "mm") {
            std::snprintf(buf, sizeof buf, "%02d", m);
        } else if (word == "m") {
            std::snprintf(buf, sizeof buf, "%c", month_names[m - 1][0]);
        } else if (word == "dddd") {
            std::snprintf(buf, sizeof buf, "%s", day_names[wd]);
        } else if (word == "ddd") {
            std::snprintf(buf, sizeof buf, "%.3s", day_names[wd]);
        } else if (word == "dd") {
            std::snprintf(buf, sizeof buf, "%02d", static_cast<int>(v[2]));
        } else if (word == "d") {
            std::snprintf(buf, sizeof buf, "%c", day_names[wd][0]);
        } else if (word == "HH") {
            int h = static_cast<int>(v[3]);
            if (twelve) h = h % 12 == 0 ? 12 : h % 12;
            std::snprintf(buf, sizeof buf, twelve ? "%2d" : "%02d", h);
        } else if (word == "MM") {
            std::snprintf(buf, sizeof buf, "%02d", static_cast<int>(v[4]));
        } else if (word == "SS") {
            std::snprintf(buf, sizeof buf, "%02d", static_cast<int>(std::floor(v[5])));
        } else if (word == "FFF") {
            std::snprintf(buf, sizeof buf, "%03d", std::min(999, static_cast<int>(std::floor((v[5] - std::floor(v[5])) * 1000 + 1e-6))));
        } else if (word == "AM" || word == "PM") {
            std::snprintf(buf, sizeof buf, "%s", v[3] < 12 ? "AM" : "PM");
        } else {  // QQ
            std::snprintf(buf, sizeof buf, "Q%d", (m - 1) / 3 + 1);
        }
        out += buf;
    }
    return out;
}

// Reads text by a format into v (fields the format lacks keep what v holds). True when the whole
// text was used.
bool parse_date(const std::string& text, const std::string& f, double v[6]) {
    std::size_t t = 0;
    bool pm = false, twelve = false;
    auto number = [&](std::size_t most, double& into) {
        std::size_t start = t;
        while (t < text.size() && t - start < most && std::isdigit(static_cast<unsigned char>(text[t]))) ++t;
        if (t == start) return false;
        into = std::stod(text.substr(start, t - start));
        return true;
    };
    auto month_word = [&](bool full) {
        for (int m = 0; m < 12; ++m) {
            const std::size_t len = full ? std::strlen(month_names[m]) : 3;
            if (t + len <= text.size() && strncasecmp(text.c_str() + t, month_names[m], len) == 0) {
                v[1] = m + 1;
                t += len;
                return true;
            }
        }
        return false;
    };
    auto skip_letters = [&]() {
        const std::size_t start = t;
        while (t < text.size() && std::isalpha(static_cast<unsigned char>(text[t]))) ++t;
        return t > start;
    };
    for (std::size_t at = 0; at < f.size();) {
        const char* w = word_at(f, at);
        if (!w) {
            if (t >= text.size() || text[t] != f[at]) return false;
            ++t;
            ++at;
            continue;
        }
        at += std::strlen(w);
        const std::string word = w;
        bool ok = true;
        if (word == "yyyy" || word == "YYYY") {
            ok = number(4, v[0]);
        } else if (word == "yy" || word == "YY") {
            double yy;
            ok = number(2, yy);
            if (ok) {
                double now[6];
                local_now(now);
                const double century = std::floor((now[0] - 50) / 100) * 100;
                v[0] = century + yy < now[0] - 50 ? century + 100 + yy : century + yy;
            }
        } else if (word == "mmmm") {
            ok = month_word(true);
        } else if (word == "mmm") {
            ok = month_word(false);
        } else if (word == "mm") {
            ok = number(2, v[1]);
        } else if (word == "dd") {
            ok = number(2, v[2]);
        } else if (word == "dddd" || word == "ddd" || word == "d" || word == "m") {
            ok = skip_letters();
        } else if (word == "HH") {
            while (t < text.size() && text[t] == ' ') ++t;
            ok = number(2, v[3]);
        } else if (word == "MM") {
            ok = number(2, v[4]);
        } else if (word == "SS") {
            ok = number(2, v[5]);
        } else if (word == "FFF") {
            double ms;
            const std::size_t start = t;
            ok = number(3, ms);
            if (ok) v[5] += ms / std::pow(10.0, static_cast<double>(t - start));
        } else if (word == "AM" || word == "PM") {
            twelve = true;
            if (t + 2 <= text.size() && (strncasecmp(text.c_str() + t, "PM", 2) == 0 || strncasecmp(text.c_str() + t, "AM", 2) == 0)) {
                pm = std::toupper(static_cast<unsigned char>(text[t])) == 'P';
                t += 2;
            } else {
                ok = false;
            }
        } else {
            ok = false;  // a quarter does not name a date
        }
        if (!ok) return false;
    }
    if (twelve) v[3] = std::fmod(v[3], 12) + (pm ? 12 : 0);
    return t == text.size();
}

// The free forms datenum understands without a format, tried in turn.
const char* const known_forms[] = {"dd-mmm-yyyy HH:MM:SS", "dd-mmm-yyyy HH:MM", "dd-mmm-yyyy", "yyyy-mm-dd HH:MM:SS",
                                   "yyyy-mm-dd HH:MM", "yyyy-mm-dd", "yyyy/mm/dd", "mm/dd/yyyy", "mm/dd/yy",
                                   "mmm.dd,yyyy HH:MM:SS", "mmm.dd,yyyy", "yyyymmddTHHMMSS", "HH:MM:SS PM",
                                   "HH:MM PM", "HH:MM:SS", "HH:MM", "mmm-dd-yyyy", "dd mmm yyyy", "mm/dd"};

// Texts to serial numbers; a text that fits no form is reported.
bool texts_to_serial(const char* function, const std::vector<std::string>& texts, const std::string* format,
                     std::vector<double>& out) {
    double now[6];
    local_now(now);
    for (std::string text : texts) {
        while (!text.empty() && text.back() == ' ') text.pop_back();
        while (!text.empty() && text.front() == ' ') text.erase(text.begin());
        // Fields missing from the text: the current year, 1 January, midnight.
        double v[6] = {now[0], 1, 1, 0, 0, 0};
        bool ok = false;
        if (format) {
            ok = parse_date(text, *format, v);
        } else {
            for (const char* f : known_forms) {
                double trial[6] = {now[0], 1, 1, 0, 0, 0};
                if (parse_date(text, f, trial)) {
                    std::copy(trial, trial + 6, v);
                    ok = true;
                    break;
                }
            }
        }
        if (!ok) {
            error("%s: cannot read the date '%s'", function, text.c_str());
            return false;
        }
        out.push_back(serial(v[0], v[1], v[2], v[3], v[4], v[5]));
    }
    return true;
}

Mm column_of(const std::vector<double>& v) {
    Mm r(0, 0, 0, static_cast<int>(v.size()), 1, ak_double);
    std::copy(v.begin(), v.end(), r.addr());
    return r;
}

// The element k of m, or its only element when m is 1x1 (scalar expansion).
double pick(const Mm& m, int k) { return m.size() == 1 ? m.addr()[0] : m.addr()[k]; }

// Serial numbers of the arguments of datenum(y, m, d, ...), broadcast to a common size.
Mm serial_of_parts(const Mm* const* parts, int n) {
    Mm d[6];
    int size = 1;
    const Mm* shape = nullptr;
    for (int k = 0; k < n; ++k) {
        parts[k]->warn_uninit();
        if (error_numeric(*parts[k], "datenum")) return x_M;
        d[k] = mdouble(*parts[k]);
        if (d[k].size() != 1) {
            if (shape && d[k].size() != size) {
                error("datenum: the date parts must have the same size, or be scalars");
                return x_M;
            }
            shape = &d[k];
            size = d[k].size();
        }
    }
    Mm r = shape ? Mm(0, 0, 0, shape->ndims, shape->dims, ak_double) : Mm(0, 0, 0, 1, 1, ak_double);
    for (int k = 0; k < size; ++k) {
        double v[6] = {0, 1, 1, 0, 0, 0};
        for (int p = 0; p < n; ++p) v[p] = pick(d[p], k);
        r.addr()[k] = serial(v[0], v[1], v[2], v[3], v[4], v[5]);
    }
    return r;
}

// Serial numbers of anything datevec, datestr or weekday accept: texts, date vectors or numbers.
bool serials_of(const char* function, const Mm& x, const Mm* format, Mm& out) {
    x.warn_uninit();
    if (x.flags.str || iscell(x)) {
        std::vector<double> v;
        std::string f;
        if (format) f = text_of(*format);
        if (!texts_to_serial(function, texts_of(x), format ? &f : nullptr, v)) return false;
        out = column_of(v);
        return true;
    }
    if (error_numeric(x, function)) return false;
    Mm d = mdouble(x);
    // Rows of 3 or 6 numbers that look like a date vector (a plausible month in column 2).
    if (d.ndims == 2 && (d.dims[1] == 3 || d.dims[1] == 6) && d.dims[0] > 0) {
        bool vectors = true;
        for (int r = 0; r < d.dims[0]; ++r) {
            const double mo = d.addr()[r + d.dims[0]];
            if (!(mo >= 1 && mo <= 12) || std::fabs(d.addr()[r]) > 10000) vectors = false;
        }
        if (vectors) {
            out = Mm(0, 0, 0, d.dims[0], 1, ak_double);
            for (int r = 0; r < d.dims[0]; ++r) {
                double v[6] = {0, 1, 1, 0, 0, 0};
                for (int c = 0; c < d.dims[1]; ++c) v[c] = d.addr()[r + c * d.dims[0]];
                out.addr()[r] = serial(v[0], v[1], v[2], v[3], v[4], v[5]);
            }
            return true;
        }
    }
    out = d;
    return true;
}

double now_serial() {
    double v[6];
    local_now(v);
    return serial(v[0], v[1], v[2], v[3], v[4], v[5]);
}

double monotonic_seconds() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec + 1e-9 * t.tv_nsec;
}

}  // namespace

Mm clockM() {
    double v[6];
    local_now(v);
    return row_of(v, 6);
}

Mm now() { return Mm(now_serial()); }

Mm date() { return TM(format_date(now_serial(), "dd-mmm-yyyy").c_str()); }

Mm datenum(const Mm& x) {
    Mm out;
    if (x.flags.str || iscell(x)) return serials_of("datenum", x, nullptr, out) ? out : x_M;
    x.warn_uninit();
    if (error_numeric(x, "datenum")) return x_M;
    Mm d = mdouble(x);
    // A row of 3 or 6 numbers is a date vector; anything else is already a serial number.
    if (d.ndims == 2 && (d.dims[1] == 3 || d.dims[1] == 6)) return serials_of("datenum", d, nullptr, out) ? out : x_M;
    return d;
}
Mm datenum(const Mm& x, const Mm& format) {
    if (!(x.flags.str || iscell(x))) {
        const Mm* parts[2] = {&x, &format};
        return serial_of_parts(parts, 2);
    }
    Mm out;
    return serials_of("datenum", x, &format, out) ? out : x_M;
}
Mm datenum(const Mm& y, const Mm& m, const Mm& d) {
    const Mm* parts[3] = {&y, &m, &d};
    return serial_of_parts(parts, 3);
}
Mm datenum(const Mm& y, const Mm& m, const Mm& d, const Mm& h) {
    const Mm* parts[4] = {&y, &m, &d, &h};
    return serial_of_parts(parts, 4);
}
Mm datenum(const Mm& y, const Mm& m, const Mm& d, const Mm& h, const Mm& mi) {
    const Mm* parts[5] = {&y, &m, &d, &h, &mi};
    return serial_of_parts(parts, 5);
}
Mm datenum(const Mm& y, const Mm& m, const Mm& d, const Mm& h, const Mm& mi, const Mm& s) {
    const Mm* parts[6] = {&y, &m, &d, &h, &mi, &s};
    return serial_of_parts(parts, 6);
}

namespace {

Mm datestr_impl(const Mm& x, const Mm* format) {
    Mm d;
    if (!serials_of("datestr", x, nullptr, d)) return x_M;
    std::string f;
    if (format && format->flags.str) {
        f = text_of(*format);
    } else if (format && format->size()) {
        const double k = scalar(*format);
        if (!(k >= 0 && k <= 31) || k != std::floor(k)) {
            error("datestr: format number must be between 0 and 31");
            return x_M;
        }
        f = numbered_formats[static_cast<int>(k)];
    } else {
        // Without a format: the time too, unless every date is at midnight.
        bool times = false;
        for (int k = 0; k < d.size(); ++k)
            if (d.addr()[k] != std::floor(d.addr()[k])) times = true;
        f = numbered_formats[times ? 0 : 1];
    }
    const int n = d.size();
    std::vector<Mm> rows(n);
    std::vector<const Mm*> list(n);
    for (int k = 0; k < n; ++k) {
        rows[k] = TM(format_date(d.addr()[k], f).c_str());
        list[k] = &rows[k];
    }
    if (n == 1) return rows[0];
    if (n == 0) return TM("");
    return str2mat(n, list.data());
}

}  // namespace

Mm datestr(const Mm& d) { return datestr_impl(d, nullptr); }
Mm datestr(const Mm& d, const Mm& format) { return datestr_impl(d, &format); }

namespace {

Mm datevec_rows(const Mm& d) {
    const int n = d.size();
    Mm r(0, 0, 0, n, 6, ak_double);
    for (int k = 0; k < n; ++k) {
        double v[6];
        civil(d.addr()[k], v);
        for (int c = 0; c < 6; ++c) r.addr()[k + c * n] = v[c];
    }
    return r;
}

}  // namespace

Mm datevec(const Mm& d) {
    Mm serials;
    if (!serials_of("datevec", d, nullptr, serials)) return x_M;
    return datevec_rows(serials);
}

Mm datevec(const Mm& d, const Mm& format) {
    Mm serials;
    if (!serials_of("datevec", d, &format, serials)) return x_M;
    return datevec_rows(serials);
}

Mm datevec(const Mm& d, i_o_t, Mm& m, Mm& day, Mm& h, Mm& mi, Mm& s) {
    Mm serials;
    if (!serials_of("datevec", d, nullptr, serials)) return x_M;
    Mm rows = datevec_rows(serials);
    const int n = serials.size();
    Mm* parts[6] = {nullptr, &m, &day, &h, &mi, &s};
    Mm y(0, 0, 0, n, 1, ak_double);
    for (int c = 0; c < 6; ++c) {
        Mm col(0, 0, 0, n, 1, ak_double);
        std::copy(rows.addr() + c * n, rows.addr() + (c + 1) * n, col.addr());
        if (c == 0)
            y = col;
        else
            *parts[c] = col;
    }
    return y;
}

Mm weekday(const Mm& d) {
    Mm name;
    return weekday(d, i_o, name);
}

Mm weekday(const Mm& d, i_o_t, Mm& name) {
    Mm serials;
    if (!serials_of("weekday", d, nullptr, serials)) return x_M;
    Mm n(0, 0, 0, serials.ndims, serials.dims, ak_double);
    std::vector<Mm> rows(serials.size());
    std::vector<const Mm*> list(serials.size());
    for (int k = 0; k < serials.size(); ++k) {
        const double v = serials.addr()[k];
        const int wd = static_cast<int>(std::fmod(std::fmod(std::floor(v) + 5, 7) + 7, 7));
        n.addr()[k] = std::isfinite(v) ? wd + 1 : std::nan("");
        char text[4];
        std::snprintf(text, sizeof text, "%.3s", day_names[wd]);
        rows[k] = TM(text);
        list[k] = &rows[k];
    }
    name = serials.size() == 1 ? rows[0] : str2mat(static_cast<int>(rows.size()), list.data());
    return n;
}

namespace {

Mm month_calendar(double y, double m) {
    Mm c(0, 0, 0, 6, 7, ak_double);
    std::fill(c.addr(), c.addr() + 42, 0.0);
    const double first = serial(y, m, 1);
    const int start = static_cast<int>(std::fmod(std::fmod(first + 5, 7) + 7, 7));  // 0 for Sunday
    double v[6];
    civil(first, v);
    const int len = month_length(v[0], static_cast<int>(v[1]));
    for (int day = 1; day <= len; ++day) {
        const int cell = start + day - 1;
        c.addr()[(cell / 7) + 6 * (cell % 7)] = day;
    }
    return c;
}

}  // namespace

Mm calendar() {
    double v[6];
    local_now(v);
    return month_calendar(v[0], v[1]);
}
Mm calendar(const Mm& d) {
    Mm serials;
    if (!serials_of("calendar", d, nullptr, serials) || serials.size() < 1) return x_M;
    double v[6];
    civil(serials.addr()[0], v);
    return month_calendar(v[0], v[1]);
}
Mm calendar(const Mm& y, const Mm& m) {
    const double mo = scalar(m);
    if (!(mo >= 1 && mo <= 12)) {
        error("calendar: month must be between 1 and 12");
        return x_M;
    }
    return month_calendar(scalar(y), mo);
}

Mm eomday(const Mm& y, const Mm& m) {
    if (error_numeric(y, "eomday") || error_numeric(m, "eomday")) return x_M;
    Mm Y = mdouble(y), M = mdouble(m);
    if (Y.size() != 1 && M.size() != 1 && Y.size() != M.size()) {
        error("eomday: year and month must have the same size, or be scalars");
        return x_M;
    }
    const Mm& shape = Y.size() != 1 ? Y : M;
    Mm r(0, 0, 0, shape.ndims, shape.dims, ak_double);
    for (int k = 0; k < shape.size(); ++k) {
        const double mo = pick(M, k);
        r.addr()[k] = (mo >= 1 && mo <= 12 && mo == std::floor(mo)) ? month_length(pick(Y, k), static_cast<int>(mo))
                                                                    : std::nan("");
    }
    return r;
}

Mm addtodate(const Mm& d, const Mm& q, const Mm& unit) {
    const double n = scalar(d), amount = scalar(q);
    const std::string u = text_of(unit);
    static const struct {
        const char* word;
        double days;
    } fixed[] = {{"day", 1}, {"hour", 1 / 24.0}, {"minute", 1 / 1440.0}, {"second", 1 / 86400.0},
                 {"millisecond", 1 / 86400e3}};
    for (const auto& f : fixed)
        if (u == f.word) return Mm(n + amount * f.days);
    if (u == "year" || u == "month") {
        if (amount != std::floor(amount)) {
            error("addtodate: a number of %ss must be whole", u.c_str());
            return x_M;
        }
        double v[6];
        civil(n, v);
        const double months = u == "year" ? 12 * amount : amount;
        return Mm(serial(v[0], v[1] + months, v[2], v[3], v[4], v[5]));
    }
    error("addtodate: unit must be 'year', 'month', 'day', 'hour', 'minute', 'second' or 'millisecond'");
    return x_M;
}

Mm etime(const Mm& t1, const Mm& t0) {
    if (error_numeric(t1, "etime") || error_numeric(t0, "etime")) return x_M;
    Mm a = mdouble(t1), b = mdouble(t0);
    if (a.size() != 6 || b.size() != 6) {
        error("etime: date vectors of 6 elements expected");
        return x_M;
    }
    const double* x = a.addr();
    const double* y = b.addr();
    // Whole days apart, then the seconds of the day, so that the seconds keep their precision.
    const double days = serial(x[0], x[1], x[2]) - serial(y[0], y[1], y[2]);
    return Mm(86400 * days + 3600 * (x[3] - y[3]) + 60 * (x[4] - y[4]) + (x[5] - y[5]));
}

Mm tic() {
    const double start = monotonic_seconds();
    TICTOC = Mm(start);
    return Mm(std::floor(start * 1e6));
}

Mm toc() {
    const double start = TICTOC.flags.type == ak_double && TICTOC.size() == 1 ? TICTOC.addr()[0] : 0.0;
    if (start == 0.0) {
        error("toc: tic was not called");
        return x_M;
    }
    return Mm(monotonic_seconds() - start);
}

Mm toc(const Mm& start) { return Mm(monotonic_seconds() - scalar(start) / 1e6); }

Mm cputime() {
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return Mm(t.tv_sec + 1e-9 * t.tv_nsec);
}

AK_BUILTIN("clock", clockM);
AK_BUILTIN("now", now);
AK_BUILTIN("date", date);
AK_BUILTIN("datenum", AK_FN(datenum, const Mm&), AK_FN(datenum, const Mm&, const Mm&), AK_FN(datenum, const Mm&, const Mm&, const Mm&),
           AK_FN(datenum, const Mm&, const Mm&, const Mm&, const Mm&), AK_FN(datenum, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&),
           AK_FN(datenum, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&, const Mm&));
AK_BUILTIN("datestr", AK_FN(datestr, const Mm&), AK_FN(datestr, const Mm&, const Mm&));
AK_BUILTIN("datevec", AK_FN(datevec, const Mm&), AK_FN(datevec, const Mm&, const Mm&),
           AK_FN(datevec, const Mm&, i_o_t, Mm&, Mm&, Mm&, Mm&, Mm&));
AK_BUILTIN("weekday", AK_FN(weekday, const Mm&), AK_FN(weekday, const Mm&, i_o_t, Mm&));
AK_BUILTIN("calendar", AK_FN(calendar), AK_FN(calendar, const Mm&), AK_FN(calendar, const Mm&, const Mm&));
AK_BUILTIN("eomday", eomday);
AK_BUILTIN("addtodate", addtodate);
AK_BUILTIN("etime", etime);
AK_BUILTIN("tic", tic);
AK_BUILTIN("toc", AK_FN(toc), AK_FN(toc, const Mm&));
AK_BUILTIN("cputime", cputime);
