// Dates and time: serial day numbers (day 1 is 1 January of year 0, fractions are the time of
// day), date vectors [year month day hour minute second], their text forms, calendars and timers.
#pragma once
#include "arklib/matrix.h"

// The local time now as a date vector (clockM), as a serial number, and as 'dd-mmm-yyyy'.
Mm clockM();  // clock() of the language; the C library owns the plain name
Mm now();
Mm date();
// datenum(text), datenum(text, format), datenum(cell of texts), datenum(vectors) (rows of 3 or 6
// columns), datenum(y, m, d), datenum(y, m, d, h, mi, s) with array arguments broadcast.
Mm datenum(const Mm& x);
Mm datenum(const Mm& x, const Mm& format);
Mm datenum(const Mm& y, const Mm& m, const Mm& d);
Mm datenum(const Mm& y, const Mm& m, const Mm& d, const Mm& h);
Mm datenum(const Mm& y, const Mm& m, const Mm& d, const Mm& h, const Mm& mi);
Mm datenum(const Mm& y, const Mm& m, const Mm& d, const Mm& h, const Mm& mi, const Mm& s);
// datestr(d), datestr(d, format): format is one of the numbered forms 0 to 31 or a free format
// of the words yyyy yy mmmm mmm mm m dddd ddd dd d HH MM SS FFF AM PM QQ; one row per date.
Mm datestr(const Mm& d);
Mm datestr(const Mm& d, const Mm& format);
// Date vectors of serial numbers or of texts; [y, m, d, h, mi, s] = datevec(...) splits them.
Mm datevec(const Mm& d);
Mm datevec(const Mm& d, const Mm& format);
Mm datevec(const Mm& d, i_o_t, Mm& m, Mm& day, Mm& h, Mm& mi, Mm& s);
// Day of the week, 1 for Sunday to 7 for Saturday, and its short name.
Mm weekday(const Mm& d);
Mm weekday(const Mm& d, i_o_t, Mm& name);
// The 6 x 7 calendar of a month (weeks from Sunday), of today's month or of the month of d.
Mm calendar();
Mm calendar(const Mm& d);
Mm calendar(const Mm& y, const Mm& m);
// Days in the month, element by element.
Mm eomday(const Mm& y, const Mm& m);
// d moved by q units of 'year', 'month', 'day', 'hour', 'minute', 'second' or 'millisecond'.
Mm addtodate(const Mm& d, const Mm& q, const Mm& unit);
// Seconds from date vector t0 to date vector t1.
Mm etime(const Mm& t1, const Mm& t0);
// tic starts the stopwatch (and gives its start in microseconds); toc gives the seconds since tic
// or since the start given.
Mm tic();
Mm toc();
Mm toc(const Mm& start);
// Processor time used by the program, in seconds.
Mm cputime();
