#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "host/media/record_size.h"
#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"

namespace mvrtpfec {
namespace {

std::size_t whole() {
    return std::numeric_limits<std::size_t>::max();
}

bool isNalFormat(StreamType type) {
    return type == StreamType::h264 || type == StreamType::hevc;
}

/// NAL units without start code and the zeros behind them.
std::vector<std::size_t> sizesOf(const KeptUnits& found) {
    std::vector<std::size_t> sizes;
    for (const auto& unit : found.units) {
        std::size_t size = unit->size();
        if (isNalFormat(unit->streamType())) {
            while (unit->bytes()[size - 1] == 0) --size;
            size -= static_cast<std::size_t>(unit->header()->startCodeLength);
        }
        sizes.push_back(size);
    }
    return sizes;
}

/// Sums of whole units up to each of the boundaries that `groups` lie between; ends where one isn't met.
std::vector<std::size_t> grouped(const std::vector<std::size_t>& sizes,
                                 const std::vector<std::size_t>& groups) {
    std::vector<std::size_t> sums;
    std::size_t sum = 0;
    for (const std::size_t size : sizes) {
        sum += size;
        if (sums.size() == groups.size() || sum < groups[sums.size()]) continue;
        sums.push_back(sum);
        sum = 0;
    }
    if (sum > 0) sums.push_back(sum);
    return sums;
}

TEST(SampleStreams, UnitsAreThoseThatFfmpegFinds) {
    std::ifstream table(std::filesystem::path(MVRTPFEC_SOURCE) / "tests" / "host" / "units_table.txt");
    int files = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with("#")) continue;
        std::istringstream words(line);
        std::string name;
        std::string kind;
        words >> name >> kind;
        const std::vector<std::size_t> expected(std::istream_iterator<std::size_t>(words), {});
        const StreamType type = formatOfStream(name)->type;
        const auto sizes = sizesOf(unitsOf(type, streamBytes(name), whole));
        EXPECT_EQ(kind == "units" ? sizes : grouped(sizes, expected), expected) << name;
        ++files;
    }
    EXPECT_EQ(files, 24);
}

TEST(SampleStreams, UnitsAreTheSameHoweverTheStreamIsCut) {
    std::minstd_rand random(7);
    for (const std::string& name : streamNames()) {
        const StreamType type = formatOfStream(name)->type;
        if (isCutIntoRecords(type)) continue;
        SCOPED_TRACE(name);
        const Bytes stream = streamBytes(name);
        const auto expected = unitsOf(type, stream, whole).contents();
        EXPECT_GT(expected.size(), 1u);
        EXPECT_EQ(unitsOf(type, stream, [] { return 1; }).contents(), expected);
        EXPECT_EQ(unitsOf(type, stream, [&] { return random() % 300; }).contents(), expected);
        EXPECT_EQ(unitsOfFile(streamPath(name), type).contents(), expected);
    }
}

TEST(SampleStreams, RecordsBecomeTheUnitsTheyHold) {
    const std::map<std::string, std::size_t> counts{
        {"scte35.bin", 5},      {"klv.bin", 3},      {"captions.ttml", 3}, {"captions.vtt", 6},
        {"subtitle.dvbsub", 3}, {"teletext.bin", 4}, {"aac_lc.aacraw", 20}};
    for (const auto& [name, count] : counts) {
        const auto units = unitsOfFile(streamPath(name), formatOfStream(name)->type).contents();
        EXPECT_EQ(units.size(), count) << name;
        Bytes joined;
        for (const Bytes& unit : units) joined.insert(joined.end(), unit.begin(), unit.end());
        EXPECT_EQ(joined, streamBytes(name)) << name;
    }
    EXPECT_EQ(recordSize(StreamType::aacRaw, Bytes(40, 0xEE)).size, 25U) << "passed over";
}

TEST(SampleStreams, RecordIsToldTheSameFromHoweverLittleIsThere) {
    for (const std::string& name : streamNames()) {
        const StreamType type = formatOfStream(name)->type;
        if (!isCutIntoRecords(type)) continue;
        SCOPED_TRACE(name);
        const Bytes stream = streamBytes(name);
        const std::size_t first = unitsOfFile(streamPath(name), type).units.front()->size();
        for (std::size_t there = 0; there <= stream.size(); ++there) {
            const RecordSize found = recordSize(type, std::span(stream).first(there));
            if (found.size > 0)
                EXPECT_EQ(found.size, first);
            else
                EXPECT_GT(found.wanted, there);
        }
        EXPECT_EQ(recordSize(type, stream).size, first);
    }
}

class UnitsCommand : public ProgramTest {
protected:
    std::string units(const std::string& name, const std::string& options = "") const {
        return "units " + streamPath(name).string() + " --format " + std::string(formatOfStream(name)->name) +
               " " + options;
    }
    /// Line `index` of the table.
    std::string row(const std::string& name, std::size_t index, const std::string& options = "") const {
        std::istringstream text(run(units(name, options)).text);
        std::string line;
        for (std::size_t i = 0; i < index + 2; ++i) std::getline(text, line);
        return line;
    }
};

TEST_F(UnitsCommand, EveryUnitHasALineWithItsKindAndTime) {
    EXPECT_EQ(row("h264_slices_aud.264", 5), "       5       0.000000       404  5 IDR slice")
        << "second slice";
    EXPECT_EQ(row("h264_fields.264", 5), "       5       0.020000       395  1 slice") << "second field";
    EXPECT_EQ(row("h264_slices_aud.264", 9, "--frame-rate 50"), "       9       0.020000        90  1 slice");
    EXPECT_EQ(row("hevc_slices_aud.265", 1), "       1              -        28  32 VPS");
    EXPECT_EQ(row("mpeg4_bframes.m4v", 6), "       6       0.120000      5482  B6 P-VOP")
        << "shown after its B-VOPs";
    EXPECT_EQ(row("mpeg4_bframes.m4v", 7), "       7       0.040000      3274  B6 B-VOP");
    EXPECT_EQ(row("h263.263", 2), "       2       0.066733      4339  INTER picture");
    EXPECT_EQ(row("aac_latm.latm", 3), "       3       0.069660       192  frame");
    EXPECT_EQ(row("scte35.bin", 1), "       1              -        58  splice_insert");
    EXPECT_EQ(row("eac3.eac3", 15), "      15       0.480000       384  E-AC-3");
}

TEST_F(UnitsCommand, SummaryCountsKindsAndWhatIsMalformed) {
    Bytes sections = streamBytes("scte35.bin");
    sections[8 + 13] = 0x02;  // no splice_command_type
    store("scte35.bin", sections);
    const auto json = figures("units scte35.bin --format scte35 --summary");
    EXPECT_EQ(json["units"], 4);
    EXPECT_EQ(json["refused"], 1);
    EXPECT_EQ(json["kinds"]["time_signal"], 1);

    const auto video = figures(units("mpeg2.m2v", "--summary"));
    EXPECT_EQ(video["kinds"]["B picture"], 16);
    EXPECT_EQ(video["unit_bytes"], streamBytes("mpeg2.m2v").size());
    EXPECT_DOUBLE_EQ(video["unit_span"], 0.96);
}

TEST_F(UnitsCommand, BrokenRecordsAreNamedByTheirPlace) {
    Bytes items = streamBytes("klv.bin");
    items[37 + 12] = 0;
    store("klv.bin", items);
    EXPECT_EQ(run("units klv.bin --format klv").status, 0) << "inside a value";
    items.insert(items.begin(), 4, 0x77);
    store("klv.bin", items);
    const Outcome result = run("units klv.bin --format klv --summary");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.text, "mvrtpfec: klv.bin: at byte 0: no universal key begins here\n");
    items = streamBytes("klv.bin");
    for (int i = 0; i < 5; ++i) items.pop_back();
    store("cut.klv", items);
    EXPECT_EQ(figures("units cut.klv --format klv --summary")["unit_bytes"], items.size())
        << "the last one is cut off";
    const std::string text = "<tt:tt xmlns:tt='x'><tt:ttt/></tt:ttt></tt:tt >\n<tt></tt>";
    store("prefixed.ttml", Bytes(text.begin(), text.end()));
    EXPECT_EQ(figures("units prefixed.ttml --format ttml --summary")["units"], 2);
    store("noise.264", Bytes(500, 'x'));
    EXPECT_EQ(run("units noise.264 --format h264 --summary").text,
              "mvrtpfec: noise.264: no unit of this format found\n");
}

}  // namespace
}  // namespace mvrtpfec
