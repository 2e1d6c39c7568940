// Dates against serial numbers fixed by the calendar itself: 1 January 2000 is day 730486 and a
// Saturday, 1 January 1970 is day 719529, and the Gregorian leap-year rule.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "arklib.h"
#include "tests/test_support.h"

using ak_test::row;

namespace {

std::string text(const Mm& m) {
    char buf[256];
    return Mstr(m, buf, sizeof buf);
}

TEST(Dates, KnownSerialNumbersAndLeapYears) {
    EXPECT_EQ(scalar(datenum(Mm(2000.0), Mm(1.0), Mm(1.0))), 730486.0);
    EXPECT_EQ(scalar(datenum(Mm(1970.0), Mm(1.0), Mm(1.0))), 719529.0);
    EXPECT_EQ(scalar(datenum(Mm(0.0), Mm(1.0), Mm(1.0))), 1.0);
    EXPECT_EQ(scalar(datenum(row({2000, 1, 1, 12, 0, 0}))), 730486.5);
    // 2000 and 2024 are leap years, 1900 and 2100 are not.
    auto feb_days = [](double y) { return scalar(datenum(Mm(y), Mm(3.0), Mm(1.0)) - datenum(Mm(y), Mm(2.0), Mm(1.0))); };
    EXPECT_EQ(feb_days(2000), 29.0);
    EXPECT_EQ(feb_days(2024), 29.0);
    EXPECT_EQ(feb_days(1900), 28.0);
    EXPECT_EQ(feb_days(2100), 28.0);
    EXPECT_EQ(scalar(eomday(Mm(2000.0), Mm(2.0))), 29.0);
    EXPECT_EQ(scalar(eomday(Mm(1900.0), Mm(2.0))), 28.0);
    // Months past 12 carry into the year; days past the month's end run on.
    EXPECT_EQ(scalar(datenum(Mm(1999.0), Mm(13.0), Mm(1.0))), 730486.0);
    EXPECT_EQ(scalar(datenum(Mm(1999.0), Mm(12.0), Mm(32.0))), 730486.0);
    // Vectors broadcast against scalars.
    Mm days = datenum(Mm(2000.0), Mm(1.0), row({1, 2, 3}));
    EXPECT_EQ(days.dims[1], 3);
    EXPECT_EQ(days.addr()[2], 730488.0);
}

TEST(Dates, VectorsRoundTripOverFourCenturies) {
    std::mt19937 gen(7);
    std::uniform_int_distribution<int> day(1, 4 * 146097);
    std::uniform_int_distribution<int> second(0, 86399);
    for (int k = 0; k < 2000; ++k) {
        const double n = 620000 + day(gen) + second(gen) / 86400.0;
        Mm v = datevec(Mm(n));
        ASSERT_EQ(v.dims[1], 6);
        EXPECT_NEAR(scalar(datenum(v)), n, 1e-9);
        EXPECT_EQ(v.addr()[5], std::floor(v.addr()[5])) << "whole seconds stay whole";
    }
    Mm m, d, h, mi, s;
    Mm y = datevec(Mm(730486.75), i_o, m, d, h, mi, s);
    EXPECT_EQ(scalar(y), 2000.0);
    EXPECT_EQ(scalar(h), 18.0);
    EXPECT_EQ(scalar(datevec(Mm(datenum(Mm(2024.0), Mm(2.0), Mm(29.0))))(1, 3)), 29.0);
}

TEST(Dates, TextFormsBothWays) {
    EXPECT_EQ(text(datestr(Mm(730486.0))), "01-Jan-2000");
    EXPECT_EQ(text(datestr(Mm(730486.5))), "01-Jan-2000 12:00:00");
    EXPECT_EQ(text(datestr(Mm(730486.65625), Mm(14.0))), " 3:45:00 PM");
    EXPECT_EQ(text(datestr(Mm(730486.0), Mm(29.0))), "2000-01-01");
    EXPECT_EQ(text(datestr(Mm(730486.0), TM("dddd mmmm dd, yyyy QQ"))), "Saturday January 01, 2000 Q1");
    EXPECT_EQ(text(datestr(Mm(730486.0 + 1.5 / 86400), TM("HH:MM:SS.FFF"))), "00:00:01.500");
    Mm two = datestr(row({730486, 730487}));
    EXPECT_EQ(two.dims[0], 2);
    EXPECT_EQ(scalar(datenum(TM("01-Jan-2000"))), 730486.0);
    EXPECT_EQ(scalar(datenum(TM("2000-03-01 12:30:00"))), scalar(datenum(row({2000, 3, 1, 12, 30, 0}))));
    EXPECT_EQ(scalar(datenum(TM("03/01/2000"))), scalar(datenum(Mm(2000.0), Mm(3.0), Mm(1.0))));
    EXPECT_EQ(scalar(datenum(TM("01.03.2000"), TM("dd.mm.yyyy"))), scalar(datenum(Mm(2000.0), Mm(3.0), Mm(1.0))));
    // Every numbered format that holds a full date reads back.
    const double when = datenum(row({2013, 7, 9, 16, 5, 42})).addr()[0];
    for (int f : {0, 21, 31}) EXPECT_NEAR(scalar(datenum(datestr(Mm(when), Mm(double(f))))), when, 1e-9) << f;
    EXPECT_ERROR(datenum(TM("not a date")), "datenum: cannot read the date 'not a date'");
    EXPECT_ERROR(datestr(Mm(1.0), Mm(40.0)), "datestr: format number must be between 0 and 31");
}

TEST(Dates, WeekdaysCalendarsArithmeticAndTimers) {
    Mm name;
    EXPECT_EQ(scalar(weekday(Mm(730486.0), i_o, name)), 7.0);
    EXPECT_EQ(text(name), "Sat");
    EXPECT_EQ(scalar(weekday(Mm(719529.0))), 5.0);  // 1 January 1970 was a Thursday
    Mm c = calendar(Mm(2000.0), Mm(1.0));
    EXPECT_EQ(c.dims[0], 6);
    EXPECT_EQ(c.addr()[0 + 6 * 6], 1.0);   // Saturday column of the first week
    EXPECT_EQ(c.addr()[5 + 6 * 1], 31.0);  // 31 January, a Monday in the sixth week
    EXPECT_EQ(scalar(addtodate(Mm(730486.0), Mm(1.0), TM("month"))), scalar(datenum(Mm(2000.0), Mm(2.0), Mm(1.0))));
    EXPECT_EQ(scalar(addtodate(Mm(730486.0), Mm(-1.0), TM("year"))), scalar(datenum(Mm(1999.0), Mm(1.0), Mm(1.0))));
    EXPECT_DOUBLE_EQ(scalar(addtodate(Mm(730486.0), Mm(6.0), TM("hour"))), 730486.25);
    EXPECT_ERROR(addtodate(Mm(1.0), Mm(1.0), TM("fortnight")),
                 "addtodate: unit must be 'year', 'month', 'day', 'hour', 'minute', 'second' or 'millisecond'");
    EXPECT_DOUBLE_EQ(scalar(etime(row({2000, 1, 2, 0, 0, 1.5}), row({2000, 1, 1, 23, 59, 59}))), 2.5);
    Mm v = clockM();
    EXPECT_EQ(v.dims[1], 6);
    EXPECT_NEAR(scalar(now()), scalar(datenum(v)), 1.0 / 86400);
    EXPECT_EQ(date().dims[1], 11);
    Mm start = tic();
    EXPECT_GE(scalar(toc()), 0.0);
    EXPECT_GE(scalar(toc(start)), 0.0);
    EXPECT_GT(scalar(cputime()), 0.0);
}

}  // namespace
