#include <cmath>
#include <string>

#include "io_test_support.h"

using ak_test::text;
using ak_test::values;

namespace {

class FileText : public ak_test::ScratchDir {};

Mm list(std::initializer_list<Mm> items) {
    std::vector<const Mm*> p;
    for (const Mm& m : items) p.push_back(&m);
    return cell_from_array(static_cast<int>(p.size()), p.data());
}

}  // namespace

TEST_F(FileText, LinesWithAndWithoutEnds) {
    write_bytes("lines.txt", "first\r\nsecond\n\nlast");
    Mm fid = open("lines.txt", "r");
    Mm line = fgets(fid);
    EXPECT_TRUE(line.flags.str);
    EXPECT_EQ(values(line), (std::vector<double>{'f', 'i', 'r', 's', 't', '\n'}));  // CR LF becomes LF
    EXPECT_EQ(text(fgetl(fid)), "second");
    EXPECT_EQ(fgetl(fid).size(), 0);
    EXPECT_EQ(text(fgetl(fid)), "last");
    EXPECT_EQ(fgetl(fid).r(), -1.0);
    EXPECT_EQ(fgets(fid).r(), -1.0);
    fclose(fid);

    write_bytes("crlf.txt", "a\r\nb\r\n");
    fid = open("crlf.txt", "rt");
    EXPECT_EQ(text(fgetl(fid)), "a");
    EXPECT_EQ(text(fgetl(fid)), "b");
    EXPECT_EQ(fgetl(fid).r(), -1.0);
    fclose(fid);

    // A lone CR at the end of the last line goes too, and bytes above 127 stay positive.
    write_bytes("end.txt", "x\xe9\r");
    fid = open("end.txt", "r");
    EXPECT_EQ(values(fgetl(fid)), (std::vector<double>{'x', 0xe9}));
    fclose(fid);
}

TEST_F(FileText, LongLinesAndCounts) {
    std::string longline(20000, 'q');
    write_bytes("long.txt", longline + "\nend\n");
    Mm fid = open("long.txt", "r");
    EXPECT_EQ(fgets(fid).size(), 16384);
    EXPECT_EQ(fgets(fid).size(), 20000 - 16384 + 1);  // the rest of the line, with its LF
    EXPECT_EQ(text(fgets(fid, Mm(2.0))), "en");
    EXPECT_EQ(text(fgets(fid, Mm(10.0))), "d\n");
    fclose(fid);
}

TEST_F(FileText, PrintToFilesAndToTheConsole) {
    Mm fid = open("out.txt", "w");
    EXPECT_EQ(fprintf(fid, TM("%d,%g\\n"), ak_test::row({1, 2.5, 3, 4})).r(), 0.0);
    fprintf(fid, TM("%s=%d\\n"), list({TM("x"), Mm(7.0)}));
    fprintf(fid, TM("done\\n"));
    fclose(fid);
    EXPECT_EQ(read_bytes("out.txt"), "1,2.5\n3,4\nx=7\ndone\n");

    ak_test::Recorder rec;
    fprintf(Mm(1.0), TM("%d|"), ak_test::row({1, 2}));
    fprintf(Mm(2.0), TM("err\\n"));
    fprintf(TM("plain %d\\n"), Mm(5.0));
    fprintf(Mm(0.0), TM("nowhere"));
    printf(TM("[%d]"), Mm(3.0));
    printf(TM("!"));
    EXPECT_EQ(rec.printed, "1|2|err\nplain 5\n[3]!");
    EXPECT_ERROR(fprintf(Mm(9.0), TM("x")), "Fid not opened.");
}

TEST_F(FileText, ScanNumbersAndText) {
    write_bytes("nums.txt", "1 2 3\n4 5 6 7\n");
    Mm fid = open("nums.txt", "r");
    Mm count;
    Mm a = fscanf(fid, TM("%d"), ak_test::row({3, INFINITY}), i_o, count);
    EXPECT_EQ(a.rows(), 3);
    EXPECT_EQ(a.cols(), 3);
    EXPECT_EQ(values(a), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 0, 0}));
    EXPECT_EQ(count.r(), 7.0);
    frewind(fid);
    EXPECT_EQ(values(fscanf(fid, TM("%d"), Mm(2.0))), (std::vector<double>{1, 2}));
    EXPECT_EQ(values(fscanf(fid, TM("%d"))), (std::vector<double>{3, 4, 5, 6, 7}));
    fclose(fid);
    write_bytes("word.txt", "hello world");
    fid = open("word.txt", "r");
    Mm word = fscanf(fid, TM("%s"));
    EXPECT_TRUE(word.flags.str);
    EXPECT_EQ(text(word), "helloworld");
    fclose(fid);
    EXPECT_ERROR(fscanf(fid), "fscanf does not accept 1 input");
}
