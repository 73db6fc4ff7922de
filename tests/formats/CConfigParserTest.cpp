#include <Orlix/formats/CConfigParser.h>
#include <Orlix/formats/CXMLElement.h>
#include <Orlix/foundation/CStringConverter.h>

#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using namespace Orlix;

namespace {

static_assert(std::has_virtual_destructor_v<CConfigParser> && !std::is_base_of_v<CObject, CConfigParser>);
static_assert(!std::is_copy_constructible_v<CConfigParser> && !std::is_copy_assignable_v<CConfigParser>);
static_assert(CConfigParser::THREAD_COUNT == 11 && CConfigParser::THREAD_PRIORITY == 51);

/** A folder of the test's own with a configuration file in it, and settings that start from the defaults. */
class CConfigParserTest : public testing::Test {
protected:
    CConfigParserTest() {
        char aryName[] = "/tmp/orlix-config-XXXXXX";
        m_strFolder = mkdtemp(aryName);
    }
    ~CConfigParserTest() override {
        CConfigParser::deleteInstance();
        unlink(filePath().c_str());
        rmdir(m_strFolder.c_str());
    }

    static CConfigParser& config() { return *CConfigParser::getInstance(); }
    std::string filePath() const { return m_strFolder + "/engine.xml"; }
    CString widePath() const {
        CString strPath;
        CStringConverter::convertFromMBCS(filePath().c_str(), strPath);
        return strPath;
    }
    CString inFolder(const wchar_t* pName) const {
        CString strPath;
        CStringConverter::convertFromMBCS(m_strFolder.c_str(), strPath);
        return strPath + L"/" + pName;
    }

    bool load(const std::string& strText) {
        std::ofstream(filePath(), std::ios::binary) << strText;
        return config().load(widePath());
    }
    std::string fileText() const {
        std::ifstream file(filePath(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    std::string m_strFolder;
};

/** Settings of the test's own, with what they do not show. */
struct tagConfigAccess : CConfigParser {
    using CConfigParser::m_strFilePath;
    using CConfigParser::m_strFolder;
    using CConfigParser::m_xmlDocument;
};

/** Collects every visited setting as text. */
struct tagCollector {
    std::vector<std::wstring>& aryLines;
    void operator()(const wchar_t* pName, bool bValue) const { line(pName, bValue ? L"true" : L"false"); }
    void operator()(const wchar_t* pName, int iValue) const { line(pName, std::to_wstring(iValue)); }
    void operator()(const wchar_t* pName, unsigned int uiValue) const { line(pName, std::to_wstring(uiValue)); }
    void operator()(const wchar_t* pName, const CString& strValue) const {
        line(pName, strValue.length() ? strValue.getBuffer() : L"");
    }
    void line(const wchar_t* pName, const std::wstring& strValue) const {
        aryLines.push_back(std::wstring(pName) + L"=" + strValue);
    }
};

template <class TRecord> void collect(std::vector<std::wstring>& aryLines, const TRecord& record) {
    TRecord::visit(record, tagCollector{aryLines});
}

/** All settings but the surfaces, in the order of the file. */
std::vector<std::wstring> settings() {
    const CConfigParser& config = *CConfigParser::getInstance();
    std::vector<std::wstring> aryLines;
    const tagCollector collector{aryLines};
    collector(L"use_for_studio", config.isUsedForStudio());
    collector(L"merge_window", config.isMergeWindow());
    collect(aryLines, config.getLogLevel());
    collect(aryLines, config.getLogOutput());
    collector(L"mem_report", config.getMemReportOutput());
    for (unsigned int i = 0; i < CConfigParser::THREAD_COUNT; ++i) {
        collector(L"thread", config.getThread().name[i]);
        collector(L"priority", config.getThread().priority[i]);
    }
    collect(aryLines, config.getResourceCache());
    collect(aryLines, config.getRenderCache());
    collect(aryLines, config.getRenderParam());
    collect(aryLines, config.getRenderGeometry());
    collect(aryLines, config.getRenderText());
    collect(aryLines, config.getTouchParam());
    collect(aryLines, config.getGestureParam());
    collect(aryLines, config.getAnimationParam());
    return aryLines;
}

const std::vector<std::wstring> DEFAULTS = {
    L"use_for_studio=false", L"merge_window=false", L"info=true", L"warning=true", L"error=true", L"debug=false",
    L"performance=false", L"terminal=true", L"file_size=1048576", L"file_path_linux=", L"mem_report=",
    // name and priority of eleven threads
    L"thread=", L"priority=51", L"thread=", L"priority=51", L"thread=", L"priority=51", L"thread=", L"priority=51",
    L"thread=", L"priority=51", L"thread=", L"priority=51", L"thread=", L"priority=51", L"thread=", L"priority=51",
    L"thread=", L"priority=51", L"thread=", L"priority=51", L"thread=", L"priority=51",
    // resource_cache
    L"character=1024", L"image=100", L"shader=100", L"mesh=50", L"audio=10",
    // render_cache
    L"text_texture_size=256", L"character=1024", L"small_texture=100", L"big_texture=10", L"big_texture_width=1280",
    L"big_texture_height=720", L"mesh=50", L"program=100",
    // render_param
    L"android_simulator=true", L"android_geometry=true", L"vertical_sync=true", L"high_quality=true",
    L"anti_aliasing=true", L"sample_count=4", L"image_no_extern=png",
    // render_geometry, render_text
    L"rectangle_offset_x=1", L"rectangle_offset_y=1", L"scale_width=100", L"scale_height=100", L"auto_hinting=true",
    L"support_complex_language=false",
    // touch_param, gesture_param, animation_param
    L"waver_distance=25", L"long_press_delay=500", L"continuous_press_interval=100", L"double_tap_interval=200",
    L"finger_time_interval=200", L"flip_min_distance=50", L"rotate_min_angle=5", L"spread_pinch_min_distance=50",
    L"fps=50"};

// Every setting with a value that is not its default.
constexpr const char* OTHER_FILE = R"(<engine use_for_studio="true" merge_window="true">
<log_level info="false" warning="false" error="false" debug="true" performance="true"/>
<log_output terminal="false" file_size="0x10" file_path_linux="log/a.log"/>
<mem_report_output file_path_linux="/var/mem.txt"/>
<thread_set>
<thread id="mq" name="n0" priority="1"/><thread id="tm" name="n1" priority="2"/>
<thread id="sc" name="n2" priority="3"/><thread id="gr" name="n3" priority="4"/>
<thread id="ap" name="n4" priority="5"/><thread id="sm" name="n5" priority="6"/>
<thread id="dt" name="n6" priority="7"/><thread id="hc" name="n7" priority="8"/>
<thread id="wb" name="n8" priority="9"/><thread id="rp" name="n9" priority="10"/>
<thread id="rs" name="n10" priority="-11"/>
</thread_set>
<resource_cache character="1" image="2" shader="3" mesh="4" audio="5"/>
<render_cache text_texture_size="6" character="7" small_texture="8" big_texture="9" big_texture_width="10"
 big_texture_height="11" mesh="12" program="13"/>
<render_param android_simulator="false" android_geometry="false" vertical_sync="false" high_quality="false"
 anti_aliasing="false" sample_count="14" image_no_extern="jpg"/>
<render_geometry rectangle_offset_x="-15" rectangle_offset_y="16"/>
<render_text scale_width="17" scale_height="18" auto_hinting="false" support_complex_language="true"/>
<touch_param waver_distance="19" long_press_delay="20" continuous_press_interval="21" double_tap_interval="22"/>
<gesture_param finger_time_interval="23" flip_min_distance="24" rotate_min_angle="25" spread_pinch_min_distance="26"/>
<animation_param fps="27"/>
</engine>)";

std::vector<std::wstring> otherSettings(const CString& strLogPath) {
    return {L"use_for_studio=true",
            L"merge_window=true",
            L"info=false",
            L"warning=false",
            L"error=false",
            L"debug=true",
            L"performance=true",
            L"terminal=false",
            L"file_size=16",
            std::wstring(L"file_path_linux=") + strLogPath.getBuffer(),
            L"mem_report=/var/mem.txt",
            L"thread=n0",
            L"priority=1",
            L"thread=n1",
            L"priority=2",
            L"thread=n2",
            L"priority=3",
            L"thread=n3",
            L"priority=4",
            L"thread=n4",
            L"priority=5",
            L"thread=n5",
            L"priority=6",
            L"thread=n6",
            L"priority=7",
            L"thread=n7",
            L"priority=8",
            L"thread=n8",
            L"priority=9",
            L"thread=n9",
            L"priority=10",
            L"thread=n10",
            L"priority=-11",
            L"character=1",
            L"image=2",
            L"shader=3",
            L"mesh=4",
            L"audio=5",
            L"text_texture_size=6",
            L"character=7",
            L"small_texture=8",
            L"big_texture=9",
            L"big_texture_width=10",
            L"big_texture_height=11",
            L"mesh=12",
            L"program=13",
            L"android_simulator=false",
            L"android_geometry=false",
            L"vertical_sync=false",
            L"high_quality=false",
            L"anti_aliasing=false",
            L"sample_count=14",
            L"image_no_extern=jpg",
            L"rectangle_offset_x=-15",
            L"rectangle_offset_y=16",
            L"scale_width=17",
            L"scale_height=18",
            L"auto_hinting=false",
            L"support_complex_language=true",
            L"waver_distance=19",
            L"long_press_delay=20",
            L"continuous_press_interval=21",
            L"double_tap_interval=22",
            L"finger_time_interval=23",
            L"flip_min_distance=24",
            L"rotate_min_angle=25",
            L"spread_pinch_min_distance=26",
            L"fps=27"};
}

TEST_F(CConfigParserTest, WithoutAFileEverySettingHasItsDefault) {
    EXPECT_EQ(settings(), DEFAULTS);
    EXPECT_EQ(config().getSurfaceCount(), 0u);
    EXPECT_EQ(config().getDisplayCount(), 0u);
    EXPECT_EQ(config().getLayerCount(0), 0u);
}

TEST_F(CConfigParserTest, ReadsEveryAttributeOfEverySection) {
    ASSERT_TRUE(load(OTHER_FILE));
    EXPECT_EQ(settings(), otherSettings(inFolder(L"log/a.log")));
}

TEST_F(CConfigParserTest, AttributesThatAreMissingFallBackInSectionsThatAreThere) {
    ASSERT_TRUE(load(OTHER_FILE));
    ASSERT_TRUE(load("<e><log_level/><log_output/><mem_report_output/><resource_cache/><render_cache/><render_param/>"
                     "<render_geometry/><render_text/><touch_param/><gesture_param/><animation_param/></e>"));
    std::vector<std::wstring> aryExpected = otherSettings(CString(L"x"));
    for (std::size_t i = 0; i < aryExpected.size(); ++i) {
        const bool bThread = DEFAULTS[i].compare(0, 7, L"thread=") == 0 || DEFAULTS[i].compare(0, 9, L"priority=") == 0;
        aryExpected[i] = bThread ? aryExpected[i] : DEFAULTS[i]; // a thread's slot is written by its element alone
    }
    EXPECT_EQ(settings(), aryExpected);
}

TEST_F(CConfigParserTest, SectionsThatAreMissingLeaveTheirSettingsAlone) {
    ASSERT_TRUE(load(OTHER_FILE));
    std::vector<std::wstring> aryExpected = otherSettings(inFolder(L"log/a.log"));
    ASSERT_TRUE(load("<e use_for_studio=\"true\" merge_window=\"true\"/>"));
    EXPECT_EQ(settings(), aryExpected);
    ASSERT_TRUE(load("<e/>")); // the root is no section: its attributes fall back
    aryExpected[0] = L"use_for_studio=false";
    aryExpected[1] = L"merge_window=false";
    EXPECT_EQ(settings(), aryExpected);
}

TEST_F(CConfigParserTest, UnknownNamesAreIgnoredAndOnlyTheFirstSectionCounts) {
    ASSERT_TRUE(load("<anything x=\"1\"><what/><LOG_LEVEL info=\"false\"/><touch_param waver_distance=\"1\" y=\"2\"/>"
                     "<touch_param waver_distance=\"9\"/><deep><animation_param fps=\"9\"/></deep></anything>"));
    std::vector<std::wstring> aryExpected = DEFAULTS;
    for (std::wstring& strLine : aryExpected)
        strLine = strLine == L"waver_distance=25" ? L"waver_distance=1" : strLine;
    EXPECT_EQ(settings(), aryExpected);
}

TEST_F(CConfigParserTest, FlagsAreTrueForTheExactWordOnly) {
    for (const char* pText : {"1", "TRUE", "True", "yes", "", " true", "true "}) {
        ASSERT_TRUE(load(std::string("<e><log_level info=\"") + pText + "\"/></e>"));
        EXPECT_FALSE(config().getLogLevel().info) << pText;
    }
    ASSERT_TRUE(load("<e><log_level info=\"true\"/></e>"));
    EXPECT_TRUE(config().getLogLevel().info);
}

TEST_F(CConfigParserTest, UnsignedNumbersTakeHexadecimalAndSignedOnesADecimalSign) {
    ASSERT_TRUE(load("<e><touch_param waver_distance=\"0xfF\"/><render_geometry rectangle_offset_x=\"-7\"/></e>"));
    EXPECT_EQ(config().getTouchParam().waver_distance, 255u);
    EXPECT_EQ(config().getRenderGeometry().rectangle_offset_x, -7);
}

TEST_F(CConfigParserTest, WhatIsNoNumberIsReadAsStringsReadItAndNoRangeIsChecked) {
    ASSERT_TRUE(load("<e><touch_param waver_distance=\"abc\" long_press_delay=\"-5\" double_tap_interval=\"\" "
                     "continuous_press_interval=\"12px\"/><render_geometry rectangle_offset_x=\"0x10\" "
                     "rectangle_offset_y=\"+3\"/><log_output file_size=\"4294967295\"/></e>"));
    EXPECT_EQ(config().getTouchParam().waver_distance, 0u);
    EXPECT_EQ(config().getTouchParam().long_press_delay, 0u);
    EXPECT_EQ(config().getTouchParam().double_tap_interval, 0u) << "empty is not absent";
    EXPECT_EQ(config().getTouchParam().continuous_press_interval, 12u);
    EXPECT_EQ(config().getRenderGeometry().rectangle_offset_x, 0) << "hexadecimal is for unsigned numbers alone";
    EXPECT_EQ(config().getRenderGeometry().rectangle_offset_y, 0);
    EXPECT_EQ(config().getLogOutput().file_size, 4294967295u);
}

TEST_F(CConfigParserTest, ThreadElementsFillTheSlotOfTheirID) {
    ASSERT_TRUE(load("<e><thread_set><thread id=\"xx\" name=\"lost\" priority=\"1\"/><thread name=\"lost\"/>"
                     "<thread id=\"TM\" name=\"lost\"/><thread id=\"tm\" name=\"first\" priority=\"60\"/>"
                     "<other id=\"ap\" name=\"lost\"/><thread id=\"dt\"/><thread id=\"tm\" name=\"second\"/>"
                     "</thread_set></e>"));
    for (unsigned int i = 0; i < CConfigParser::THREAD_COUNT; ++i) {
        EXPECT_EQ(config().getThread().name[i], i == CConfigParser::THREAD_TM ? L"second" : L"") << i;
        EXPECT_EQ(config().getThread().priority[i], 51) << i;
    }
}

TEST_F(CConfigParserTest, AThreadElementWritesItsOwnSlotWhole) {
    ASSERT_TRUE(load(OTHER_FILE));
    ASSERT_TRUE(load("<e><thread_set><thread id=\"sm\"/><thread id=\"wb\" priority=\"70\"/></thread_set></e>"));
    const CConfigParser::tagThread& thread = config().getThread();
    EXPECT_EQ(thread.name[CConfigParser::THREAD_SM], L"") << "what the element does not name falls back";
    EXPECT_EQ(thread.priority[CConfigParser::THREAD_SM], 51);
    EXPECT_EQ(thread.name[CConfigParser::THREAD_WB], L"");
    EXPECT_EQ(thread.priority[CConfigParser::THREAD_WB], 70);
    EXPECT_EQ(thread.name[CConfigParser::THREAD_MQ], L"n0") << "a slot without an element stays";
    EXPECT_EQ(thread.priority[CConfigParser::THREAD_RS], -11);
}

TEST_F(CConfigParserTest, NamesTheSlotsOfTheThreads) {
    const wchar_t* const aryID[] = {L"mq", L"tm", L"sc", L"gr", L"ap", L"sm", L"dt", L"hc", L"wb", L"rp", L"rs"};
    for (unsigned int i = 0; i < CConfigParser::THREAD_COUNT; ++i)
        EXPECT_STREQ(CConfigParser::getThreadID(CConfigParser::EThread(i)), aryID[i]);
}

TEST_F(CConfigParserTest, RelativePathsStartFromTheFilesFolder) {
    const struct {
        const char* pValue;
        CString strPath;
    } aryRow[] = {{"a.log", inFolder(L"a.log")},
                  {"./a.log", inFolder(L"a.log")},
                  {"../a.log", L"/tmp/a.log"},
                  {"/x/a.log", L"/x/a.log"},
                  {"", L""}};
    for (const auto& row : aryRow) {
        ASSERT_TRUE(load(std::string("<e><log_output file_path_linux=\"") + row.pValue +
                         "\"/><mem_report_output file_path_linux=\"" + row.pValue + "\"/></e>"));
        EXPECT_EQ(config().getLogOutput().file_path_linux, row.strPath) << row.pValue;
        EXPECT_EQ(config().getMemReportOutput(), row.strPath) << row.pValue;
    }
}

TEST_F(CConfigParserTest, OnlyTheLinuxPathsAreRead) {
    ASSERT_TRUE(load("<e><log_output file_path=\"/a\" file_path_windows=\"/b\"/></e>"));
    EXPECT_EQ(config().getLogOutput().file_path_linux, L"");
}

// A file without a folder in its path gives nothing to start from, so even an absolute path in it is lost: on purpose.
TEST_F(CConfigParserTest, AFileWithoutFolderGivesNoPaths) {
    ASSERT_EQ(chdir(m_strFolder.c_str()), 0);
    std::ofstream(filePath()) << "<e><log_output file_path_linux=\"/x/a.log\"/></e>";
    ASSERT_TRUE(config().load(L"engine.xml"));
    EXPECT_EQ(config().getLogOutput().file_path_linux, L"");
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(CConfigParserTest, ReadsEveryAttributeOfASurface) {
    ASSERT_TRUE(load("<e><surface_set><surface/><other use=\"true\"/><surface use=\"true\" name=\"n\" "
                     "display_name=\"d\" display_id=\"-1\" layer_id=\"2\" surface_id=\"3\" offset_x=\"-4\" "
                     "offset_y=\"5\" width=\"6\" width_default=\"7\" height=\"8\" height_default=\"9\" "
                     "enable_touch=\"true\" enable_gesture=\"true\" initial_color=\"0xff112233\"/></surface_set></e>"));
    ASSERT_EQ(config().getSurfaceCount(), 2u);
    std::vector<std::wstring> aryLines;
    collect(aryLines, *config().getSurfaceByIndex(0));
    const std::vector<std::wstring> aryDefaults = {L"use=false",
                                                   L"name=",
                                                   L"display_name=",
                                                   L"display_id=0",
                                                   L"layer_id=0",
                                                   L"surface_id=0",
                                                   L"offset_x=0",
                                                   L"offset_y=0",
                                                   L"width=0",
                                                   L"width_default=0",
                                                   L"height=0",
                                                   L"height_default=0",
                                                   L"enable_touch=false",
                                                   L"enable_gesture=false",
                                                   L"initial_color=0"};
    EXPECT_EQ(aryLines, aryDefaults);
    EXPECT_EQ(config().getSurfaceByIndex(0)->param, nullptr);
    aryLines.clear();
    collect(aryLines, *config().getSurfaceByIndex(1));
    const std::vector<std::wstring> aryOther = {L"use=true",
                                                L"name=n",
                                                L"display_name=d",
                                                L"display_id=-1",
                                                L"layer_id=2",
                                                L"surface_id=3",
                                                L"offset_x=-4",
                                                L"offset_y=5",
                                                L"width=6",
                                                L"width_default=7",
                                                L"height=8",
                                                L"height_default=9",
                                                L"enable_touch=true",
                                                L"enable_gesture=true",
                                                L"initial_color=4279312947"};
    EXPECT_EQ(aryLines, aryOther);
    EXPECT_EQ(config().getSurfaceByIndex(2), nullptr);
}

TEST_F(CConfigParserTest, CountsByDisplayAndLayerTakeTheSurfacesInUse) {
    ASSERT_TRUE(load("<e><surface_set><surface/>"
                     "<surface use=\"true\" display_id=\"1\" layer_id=\"5\"/><surface use=\"true\" display_id=\"1\" "
                     "layer_id=\"5\"/><surface use=\"true\" display_id=\"1\" layer_id=\"6\"/>"
                     "<surface use=\"true\" display_id=\"2\" layer_id=\"5\"/><surface display_id=\"3\" "
                     "layer_id=\"7\"/></surface_set></e>"));
    EXPECT_EQ(config().getSurfaceCount(), 6u);
    EXPECT_EQ(config().getSurfaceCount(0), 0u);
    EXPECT_EQ(config().getSurfaceCount(1), 3u);
    EXPECT_EQ(config().getSurfaceCount(3), 0u);
    EXPECT_EQ(config().getSurfaceCount(1, 5), 2u);
    EXPECT_EQ(config().getSurfaceCount(1, 6), 1u);
    EXPECT_EQ(config().getSurfaceCount(2, 6), 0u);
    EXPECT_EQ(config().getLayerCount(1), 2u);
    EXPECT_EQ(config().getLayerCount(2), 1u);
    EXPECT_EQ(config().getLayerCount(3), 0u);
    EXPECT_EQ(config().getDisplayCount(), 2u);
}

TEST_F(CConfigParserTest, FindsTheFirstSurfaceOfAName) {
    ASSERT_TRUE(load("<e><surface_set><surface name=\"a\" width=\"1\"/><surface name=\"b\" width=\"2\"/>"
                     "<surface name=\"b\" width=\"3\"/></surface_set></e>"));
    EXPECT_EQ(config().getSurfaceByByName(L"b"), config().getSurfaceByIndex(1));
    EXPECT_EQ(config().getSurfaceByByName(L"B"), nullptr);
}

TEST_F(CConfigParserTest, FirstInLayerLooksBackToTheNearestSurfaceInUse) {
    const auto isFirst = [](unsigned int uiIndex) { return config().isFirstSurfaceInLayer(uiIndex); };
    ASSERT_TRUE(load("<e><surface_set><surface use=\"true\" layer_id=\"1\"/><surface use=\"true\" layer_id=\"1\"/>"
                     "<surface use=\"true\" layer_id=\"2\"/><surface layer_id=\"3\"/><surface use=\"true\" "
                     "layer_id=\"2\"/><surface use=\"true\" layer_id=\"2\" display_id=\"1\"/><surface layer_id=\"2\" "
                     "display_id=\"1\"/></surface_set></e>"));
    const bool aryFirst[] = {true, false, true, true, false, true, false, true};
    for (unsigned int i = 0; i < 8; ++i) // the last one lies past the end
        EXPECT_EQ(isFirst(i), aryFirst[i]) << i;
    config().close();
    ASSERT_TRUE(load("<e><surface_set><surface/><surface/></surface_set></e>"));
    EXPECT_TRUE(isFirst(1)) << "no surface in use comes before it";
}

TEST_F(CConfigParserTest, ASecondLoadAddsItsSurfacesUnlessCloseCameBetween) {
    constexpr const char* FILE_TEXT = "<e><surface_set><surface/></surface_set></e>";
    ASSERT_TRUE(load(FILE_TEXT));
    ASSERT_TRUE(load(FILE_TEXT));
    EXPECT_EQ(config().getSurfaceCount(), 2u);
    config().close();
    EXPECT_EQ(config().getSurfaceCount(), 0u);
    ASSERT_TRUE(load(FILE_TEXT));
    EXPECT_EQ(config().getSurfaceCount(), 1u);
}

TEST_F(CConfigParserTest, AFileThatCannotBeLoadedLeavesAllAsItWas) {
    ASSERT_TRUE(load(OTHER_FILE));
    EXPECT_FALSE(load("<e merge_window=\"false\"><log_level info=\"true\"/>"));
    EXPECT_EQ(settings(), otherSettings(inFolder(L"log/a.log")));
    EXPECT_FALSE(config().load(inFolder(L"missing.xml")));
    EXPECT_FALSE(config().load(inFolder(L""))) << "a folder";
    EXPECT_EQ(settings(), otherSettings(inFolder(L"log/a.log")));
    EXPECT_FALSE(config().save()) << "the document went with the failed load";
}

TEST_F(CConfigParserTest, AFailedLoadKeepsPathAndFolderAndLeavesAnEmptyDocument) {
    tagConfigAccess access;
    std::ofstream(filePath()) << "<e use_for_studio=\"true\"/>";
    ASSERT_TRUE(access.load(widePath()));
    EXPECT_EQ(access.m_strFilePath, widePath());
    EXPECT_EQ(access.m_strFolder + L"/engine.xml", widePath());
    std::ofstream(filePath()) << "<e use_for_studio=\"false\"><";
    EXPECT_FALSE(access.load(L"/elsewhere/engine.xml"));
    EXPECT_FALSE(access.load(CString(L"/") + widePath())) << "a syntax error";
    EXPECT_EQ(access.m_strFilePath, widePath());
    EXPECT_EQ(access.m_strFolder + L"/engine.xml", widePath());
    EXPECT_TRUE(access.isUsedForStudio());
    EXPECT_EQ(access.m_xmlDocument.getEncoding(), CXMLParser::XML_ENCODING_NONE);
}

TEST_F(CConfigParserTest, SavesOnlyWhatItOwns) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\" keep=\"1\"><!--c--><log_level info=\"false\" odd=\"x\"/><surface_set "
                     "a=\"b\"><surface width=\"1\" initial_color=\"7\" extra=\"y\"/><surface width=\"0x2\" "
                     "height=\"0x3\"/></surface_set><unknown><deep>text</deep></unknown></e>"));
    config().setSurfaceInitialColor(1, 0xABCDEF);
    config().changeSurfaceSize(0, 640, 480);
    config().setMergeWindow(true);
    ASSERT_TRUE(config().save());
    EXPECT_EQ(fileText(), "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<e keep=\"1\" merge_window=\"true\" use_for_studio=\"true\">\n"
                          "\t<log_level info=\"false\" odd=\"x\"/>\n"
                          "\t<surface_set a=\"b\">\n"
                          "\t\t<surface extra=\"y\" height=\"480\" initial_color=\"0x00000007\" width=\"640\"/>\n"
                          "\t\t<surface height=\"0x3\" initial_color=\"0x00ABCDEF\" width=\"0x2\"/>\n"
                          "\t</surface_set>\n"
                          "\t<unknown>\n"
                          "\t\t<deep>text</deep>\n"
                          "\t</unknown>\n"
                          "</e>\n");
}

TEST_F(CConfigParserTest, SaveWithoutAChangeDoesNotTouchTheFile) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\"><surface_set><surface/></surface_set></e>"));
    unlink(filePath().c_str());
    config().setMergeWindow(false);
    config().setSurfaceInitialColor(0, 0);
    config().changeSurfaceSize(0, 0, 0);
    int iParam = 0;
    config().setSurfaceParam(0, &iParam);
    EXPECT_EQ(config().getSurfaceByIndex(0)->param, &iParam);
    EXPECT_TRUE(config().save());
    EXPECT_NE(access(filePath().c_str(), F_OK), 0);
    config().setMergeWindow(true);
    EXPECT_TRUE(config().save());
    EXPECT_EQ(access(filePath().c_str(), F_OK), 0);
    unlink(filePath().c_str());
    EXPECT_TRUE(config().save()) << "saved is not changed any more";
    EXPECT_NE(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, SaveNeedsTheDocument) {
    EXPECT_FALSE(config().save()) << "nothing loaded";
    ASSERT_TRUE(load("<e/>"));
    EXPECT_FALSE(config().save()) << "not used for studio";
    ASSERT_TRUE(load("<e use_for_studio=\"true\"/>"));
    EXPECT_TRUE(config().save());
    config().close();
    EXPECT_FALSE(config().save()) << "closed";
}

TEST_F(CConfigParserTest, SaveThatFailsStaysDue) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\"/>"));
    config().setMergeWindow(true);
    ASSERT_EQ(unlink(filePath().c_str()), 0);
    ASSERT_EQ(mkdir(filePath().c_str(), 0700), 0); // cannot be opened for writing
    EXPECT_FALSE(config().save());
    ASSERT_EQ(rmdir(filePath().c_str()), 0);
    EXPECT_TRUE(config().save());
    EXPECT_EQ(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, CloseForgetsChangesButKeepsTheSettings) {
    ASSERT_TRUE(load(OTHER_FILE));
    config().close();
    EXPECT_EQ(settings(), otherSettings(inFolder(L"log/a.log")));
    config().setMergeWindow(false);
    config().close();
    ASSERT_TRUE(load("<e use_for_studio=\"true\"/>"));
    unlink(filePath().c_str());
    EXPECT_TRUE(config().save());
    EXPECT_NE(access(filePath().c_str(), F_OK), 0) << "a change from before close was saved";
}

TEST_F(CConfigParserTest, OneChangeIsEnoughAndALaterLoadKeepsItDue) {
    constexpr const char* FILE_TEXT = "<e use_for_studio=\"true\"><surface_set><surface/></surface_set></e>";
    ASSERT_TRUE(load(FILE_TEXT));
    config().setMergeWindow(true);
    config().setMergeWindow(false); // back where it was, and still a change
    ASSERT_TRUE(load(FILE_TEXT));
    unlink(filePath().c_str());
    EXPECT_TRUE(config().save());
    EXPECT_EQ(access(filePath().c_str(), F_OK), 0);
    config().setSurfaceInitialColor(0, 1);
    config().setMergeWindow(false); // no change, which takes none back
    unlink(filePath().c_str());
    EXPECT_TRUE(config().save());
    EXPECT_EQ(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, WhatALoadChangesIsNotDue) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\" merge_window=\"true\"/>"));
    unlink(filePath().c_str());
    EXPECT_TRUE(config().save());
    EXPECT_NE(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, SavePassesOverSurfacesThatTheDocumentHasNoPlaceFor) {
    ASSERT_TRUE(load("<e><surface_set><surface width=\"1\"/></surface_set></e>"));
    ASSERT_TRUE(load("<e use_for_studio=\"true\"><surface_set><surface width=\"2\"/></surface_set></e>"));
    config().changeSurfaceSize(1, 9, 9);
    ASSERT_TRUE(config().save());
    EXPECT_NE(fileText().find("<surface height=\"0\" initial_color=\"0x00000000\" width=\"1\"/>"), std::string::npos)
        << "the surface of index 0 goes to the first child:\n"
        << fileText();
    ASSERT_TRUE(load("<e use_for_studio=\"true\"/>"));
    config().setMergeWindow(true);
    EXPECT_TRUE(config().save()) << "no surface_set";
}

// The place is the index among all children, on purpose: "surface" is meant to be the only kind.
TEST_F(CConfigParserTest, SaveCountsChildrenOfEveryName) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\"><surface_set><other/><surface/></surface_set></e>"));
    config().changeSurfaceSize(0, 5, 6);
    ASSERT_TRUE(config().save());
    EXPECT_NE(fileText().find("<other height=\"6\" initial_color=\"0x00000000\" width=\"5\"/>"), std::string::npos);
    EXPECT_NE(fileText().find("<surface/>"), std::string::npos);
}

TEST_F(CConfigParserTest, AChangeOfSizeTo0TakesTheDefault) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\"><surface_set><surface width=\"10\" width_default=\"20\" "
                     "height=\"30\" height_default=\"40\"/></surface_set></e>"));
    const CConfigParser::tagSurface& surface = *config().getSurfaceByIndex(0);
    config().changeSurfaceSize(0, 11, 30);
    EXPECT_EQ(surface.width, 11u);
    EXPECT_EQ(surface.height, 30u);
    config().changeSurfaceSize(0, 0, 0);
    EXPECT_EQ(surface.width, 20u);
    EXPECT_EQ(surface.height, 40u);
    ASSERT_TRUE(config().save());
    unlink(filePath().c_str());
    config().changeSurfaceSize(0, 0, 40); // 0 is not the current 20, so it is a change though nothing differs after it
    EXPECT_EQ(surface.width, 20u);
    ASSERT_TRUE(config().save());
    EXPECT_EQ(access(filePath().c_str(), F_OK), 0);
    unlink(filePath().c_str());
    config().changeSurfaceSize(0, 20, 40);
    ASSERT_TRUE(config().save());
    EXPECT_NE(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, SettersIgnoreIndexesPastTheEnd) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\"><surface_set><surface/></surface_set></e>"));
    unlink(filePath().c_str());
    config().changeSurfaceSize(1, 5, 5);
    config().setSurfaceInitialColor(1, 5);
    config().setSurfaceParam(1, this);
    EXPECT_TRUE(config().save());
    EXPECT_NE(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, AddingASurfacePointerOnlyIsNoChange) {
    ASSERT_TRUE(load("<e use_for_studio=\"true\"><surface_set><surface/></surface_set></e>"));
    unlink(filePath().c_str());
    config().setSurfaceParam(0, this);
    EXPECT_TRUE(config().save());
    EXPECT_NE(access(filePath().c_str(), F_OK), 0);
}

TEST_F(CConfigParserTest, DeletedInstanceComesBackWithDefaults) {
    ASSERT_TRUE(load(OTHER_FILE));
    CConfigParser::deleteInstance();
    CConfigParser::deleteInstance(); // without an instance nothing happens
    EXPECT_EQ(settings(), DEFAULTS);
}

/** One letter for the type of each visited field. */
template <class TRecord> std::string typesOf(const TRecord& record) {
    struct tagTypes {
        std::string& strTypes;
        void operator()(const wchar_t*, const bool&) const { strTypes += 'b'; }
        void operator()(const wchar_t*, const int&) const { strTypes += 'i'; }
        void operator()(const wchar_t*, const unsigned int&) const { strTypes += 'u'; }
        void operator()(const wchar_t*, const CString&) const { strTypes += 's'; }
    };
    std::string strTypes;
    TRecord::visit(record, tagTypes{strTypes});
    return strTypes;
}

// The type decides how a value is read: signed numbers know no hexadecimal form, unsigned ones no sign.
TEST_F(CConfigParserTest, FieldsAreFlagsSignedOrUnsignedNumbersOrTexts) {
    EXPECT_EQ(typesOf(config().getLogLevel()), "bbbbb");
    EXPECT_EQ(typesOf(config().getLogOutput()), "bus");
    EXPECT_EQ(typesOf(CConfigParser::tagSurface()), "bssiiiiiuuuubbu");
    EXPECT_EQ(typesOf(config().getResourceCache()), "uuuuu");
    EXPECT_EQ(typesOf(config().getRenderCache()), "uuuuuuuu");
    EXPECT_EQ(typesOf(config().getRenderParam()), "bbbbbus");
    EXPECT_EQ(typesOf(config().getRenderGeometry()), "ii");
    EXPECT_EQ(typesOf(config().getRenderText()), "uubb");
    EXPECT_EQ(typesOf(config().getTouchParam()), "uuuu");
    EXPECT_EQ(typesOf(config().getGestureParam()), "uuuu");
    EXPECT_EQ(typesOf(config().getAnimationParam()), "u");
}

/** Collects where each visited field lies. */
template <class TRecord> std::vector<const void*> addressesOf(const TRecord& record) {
    std::vector<const void*> aryAddresses{&record};
    TRecord::visit(record, [&](const wchar_t*, const auto& field) { aryAddresses.push_back(&field); });
    aryAddresses.push_back(&record + 1);
    return aryAddresses;
}

// Readers take the records as they lie in memory.
TEST_F(CConfigParserTest, FieldsLieInTheOrderOfTheFile) {
    const CConfigParser::tagSurface surface;
    std::vector<const void*> arySurface = addressesOf(surface);
    arySurface.insert(arySurface.end() - 1, &surface.param);
    for (const std::vector<const void*>& aryAddresses :
         {addressesOf(config().getLogLevel()), addressesOf(config().getLogOutput()),
          addressesOf(config().getResourceCache()), addressesOf(config().getRenderCache()),
          addressesOf(config().getRenderParam()), addressesOf(config().getRenderGeometry()),
          addressesOf(config().getRenderText()), addressesOf(config().getTouchParam()),
          addressesOf(config().getGestureParam()), addressesOf(config().getAnimationParam()), arySurface})
        EXPECT_TRUE(std::is_sorted(aryAddresses.begin(), aryAddresses.end(), std::less<const void*>()))
            << aryAddresses.size();
    const CConfigParser::tagThread& thread = config().getThread();
    EXPECT_LT(static_cast<const void*>(&thread.name), static_cast<const void*>(&thread.priority));
}

// The file that ships shows every attribute with its default, so that loading it changes no record.
TEST_F(CConfigParserTest, TheShippedFileHasEveryAttributeAtItsDefault) {
    CString strPath;
    CStringConverter::convertFromMBCS(ORLIX_ENGINE_XML, strPath);
    ASSERT_TRUE(load(OTHER_FILE)) << "so that what the shipped file leaves out shows";
    ASSERT_TRUE(config().load(strPath));
    EXPECT_EQ(settings(), DEFAULTS);
    CXMLParser xmlDocument;
    ASSERT_TRUE(xmlDocument.parseFromFile(strPath));
    const struct {
        const wchar_t* pSection;
        unsigned int uiAttributes;
    } aryRow[] = {{L"log_level", 5},    {L"log_output", 3},    {L"mem_report_output", 1}, {L"resource_cache", 5},
                  {L"render_cache", 8}, {L"render_param", 7},  {L"render_geometry", 2},   {L"render_text", 4},
                  {L"touch_param", 4},  {L"gesture_param", 4}, {L"animation_param", 1}};
    for (const auto& row : aryRow) {
        CXMLElement* const pSection = xmlDocument.getRootElement()->getSingleChild(row.pSection);
        ASSERT_NE(pSection, nullptr) << row.uiAttributes;
        EXPECT_EQ(pSection->getAttributeCount(), row.uiAttributes) << pSection->getName().getBuffer();
    }
    EXPECT_EQ(xmlDocument.getRootElement()->getAttributeCount(), 2u);
    CDataArray<CXMLElement*> aryThreads;
    xmlDocument.getRootElement()->getSingleChild(L"thread_set")->getChildren(L"thread", aryThreads);
    EXPECT_EQ(aryThreads.getSize(), 11u);
    CXMLElement* const pSurface =
        xmlDocument.getRootElement()->getSingleChild(L"surface_set")->getSingleChild(L"surface");
    EXPECT_EQ(pSurface->getAttributeCount(), 15u);
    ASSERT_EQ(config().getSurfaceCount(), 1u);
    std::vector<std::wstring> aryShipped, aryDefault;
    collect(aryShipped, *config().getSurfaceByIndex(0));
    CConfigParser::tagSurface surface;
    surface.use = surface.enable_touch = true; // or the host that loads it would take no touches
    collect(aryDefault, surface);
    EXPECT_EQ(aryShipped, aryDefault);
}
} // namespace
