// Parsing and saving in memory: a configuration of 6 KB and 10 MB of nested elements with four attributes and short
// texts, and the bytes that the tree of the latter takes.
//
// A parse builds the whole tree from UTF-8 bytes that stay untouched; peers that parse in place or read wide text make
// their copy within the time. The tree is dropped outside the time; what that costs has a row of its own. A save gives
// one string, wide for the library and for wptree and UTF-8 for the others. The floor of a parse is the allocations
// that the tree is made of, with nothing in them. Times are processor time; the row of bytes is no time at all.
#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLParser.h>
#include <Orlix/foundation/CString.h>
#include <Orlix/memory/CMemory.h>

#include <benchmark/benchmark.h>

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <libxml/parser.h>
#include <malloc.h>
#include <pugixml.hpp>
#include <tinyxml2.h>

#include <QDomDocument>

#include <cstring>
#include <ctime>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t SMALL = 6 * 1024;
constexpr std::size_t MEGABYTE = 1024 * 1024;

/** A configuration as the engine has it: sections, and in them entries whose values are names, numbers and paths. */
std::string makeConfiguration() {
    std::string strXML = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<config>\n";
    for (int i = 0; strXML.size() < SMALL; ++i) {
        const std::string strNumber = std::to_string(i);
        strXML += "\t<surface id=\"" + strNumber + "\" width=\"1920\" height=\"1080\" title=\"display &amp; wall " +
                  strNumber + "\">\n";
        strXML += "\t\t<touch long_press_delay=\"800\" move_distance=\"12.5\" enabled=\"true\"/>\n";
        strXML += "\t\t<path>resource/surface_" + strNumber + "/scene.bin</path>\n\t</surface>\n";
    }
    return strXML + "</config>\n";
}

/** Three levels under the root, each element with four attributes, the innermost with a text. */
std::string makeLarge(std::size_t uiBytes) {
    std::string strXML = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<scene>\n";
    for (int i = 0; strXML.size() < uiBytes; ++i) {
        const std::string strNumber = std::to_string(i);
        strXML += "<group id=\"g" + strNumber + "\" x=\"12.5\" y=\"310\" visible=\"true\">\n";
        for (int k = 0; k < 4; ++k) {
            strXML +=
                "<node id=\"" + strNumber + "\" kind=\"button\" left=\"" + std::to_string(k * 37) + "\" top=\"140\">\n";
            strXML += "<label font=\"sans\" size=\"12\" color=\"ff8800\" bold=\"false\">Button &lt;" + strNumber +
                      "&gt;</label>\n</node>\n";
        }
        strXML += "</group>\n";
    }
    return strXML + "</scene>\n";
}

const std::string& getInput(std::int64_t iBytes) {
    static const std::string s_strSmall = makeConfiguration();
    static const std::string s_str1 = makeLarge(MEGABYTE);
    static const std::string s_str10 = makeLarge(10 * MEGABYTE);
    static const std::string s_str100 = makeLarge(100 * MEGABYTE);
    switch (iBytes) {
    case 6:
        return s_strSmall;
    case 1000:
        return s_str1;
    case 10000:
        return s_str10;
    default:
        return s_str100;
    }
}

struct OrlixXML {
    Orlix::CXMLParser parser;
    Orlix::CString strSaved;
    bool parse(const std::string& strXML) {
        return parser.parseFromStream(reinterpret_cast<const unsigned char*>(strXML.c_str()));
    }
    std::size_t save() {
        parser.saveToString(strSaved, false);
        return strSaved.length();
    }
};

/** Takes the blocks of the tree one after the other and chains them up, with nothing else in them. */
struct Floor {
    void* pLast = nullptr;
    void take(unsigned int uiSize) {
        void* const pBlock = Orlix::CMemory::malloc(uiSize, 0);
        std::memcpy(pBlock, &pLast, sizeof(pLast));
        pLast = pBlock;
    }
    bool parse(const std::string& strXML) {
        for (std::size_t i = 0; i + 1 < strXML.size(); ++i) {
            if (strXML[i] == '<' && strXML[i + 1] != '/' && strXML[i + 1] != '?') {
                take(sizeof(Orlix::CXMLElement));
                take(6 * sizeof(wchar_t)); // its name
                take(8 * sizeof(void*));   // its children or its text
            } else if (strXML[i] == '=' && strXML[i + 1] == '"') {
                take(sizeof(Orlix::CXMLElement::CAttributeMap::tagNode));
                take(6 * sizeof(wchar_t));                          // the name in it
                take(sizeof(Orlix::CString) + 6 * sizeof(wchar_t)); // the value with its characters
            }
        }
        return true;
    }
    ~Floor() {
        while (void* const pBlock = pLast) {
            std::memcpy(&pLast, pBlock, sizeof(pLast));
            Orlix::CMemory::free(pBlock);
        }
    }
};

struct TinyXml2 {
    tinyxml2::XMLDocument document;
    bool parse(const std::string& strXML) {
        return document.Parse(strXML.data(), strXML.size()) == tinyxml2::XML_SUCCESS;
    }
    std::size_t save() {
        tinyxml2::XMLPrinter printer(nullptr, true);
        document.Print(&printer);
        return static_cast<std::size_t>(printer.CStrSize());
    }
};

struct LibXml2 {
    xmlDocPtr pDocument = nullptr;
    bool parse(const std::string& strXML) {
        pDocument = xmlReadMemory(strXML.data(), static_cast<int>(strXML.size()), nullptr, nullptr,
                                  XML_PARSE_HUGE | XML_PARSE_NOBLANKS);
        return pDocument != nullptr;
    }
    std::size_t save() {
        xmlChar* pSaved = nullptr;
        int iSize = 0;
        xmlDocDumpMemory(pDocument, &pSaved, &iSize);
        xmlFree(pSaved);
        return static_cast<std::size_t>(iSize);
    }
    ~LibXml2() { xmlFreeDoc(pDocument); }
};

struct QDom {
    QDomDocument document;
    bool parse(const std::string& strXML) {
        return document.setContent(QByteArray::fromRawData(strXML.data(), static_cast<qsizetype>(strXML.size())));
    }
    std::size_t save() { return static_cast<std::size_t>(document.toByteArray(-1).size()); }
};

struct Wptree {
    boost::property_tree::wptree tree;
    bool parse(const std::string& strXML) {
        std::wistringstream stream(std::wstring(strXML.begin(), strXML.end()));
        boost::property_tree::read_xml(stream, tree, boost::property_tree::xml_parser::trim_whitespace);
        return !tree.empty();
    }
    std::size_t save() {
        std::wostringstream stream;
        boost::property_tree::write_xml(stream, tree);
        return stream.str().size();
    }
};

struct PugiXml {
    pugi::xml_document document;
    bool parse(const std::string& strXML) { return document.load_buffer(strXML.data(), strXML.size()); }
    std::size_t save() {
        std::ostringstream stream;
        document.save(stream, "", pugi::format_raw);
        return stream.str().size();
    }
};

/** The processor time of this thread, which unlike the clock on the wall does not count other programs. */
class CStopwatch {
public:
    CStopwatch() : m_dStart(getNow()) {}
    double getSeconds() const { return getNow() - m_dStart; }

private:
    double m_dStart;

    static double getNow() {
        timespec now;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    }
};

/** As many documents of a size that the clock's reading does not count. */
std::size_t getBatch(std::int64_t iKilobytes) { return iKilobytes < 100 ? 100 : 1; }

template <class T> std::vector<std::unique_ptr<T>> makeParsed(benchmark::State& state, double* pParse, double* pDrop) {
    const std::string& strXML = getInput(state.range(0));
    std::vector<std::unique_ptr<T>> aryDocument(getBatch(state.range(0)));
    const CStopwatch stopParse;
    for (auto& document : aryDocument) {
        document = std::make_unique<T>();
        if (!document->parse(strXML))
            state.SkipWithError("the document was not parsed");
    }
    if (pParse)
        *pParse = stopParse.getSeconds();
    if (!pDrop)
        return aryDocument;
    const CStopwatch stopDrop;
    aryDocument.clear();
    *pDrop = stopDrop.getSeconds();
    return aryDocument;
}

template <class T> void parse(benchmark::State& state) {
    for (auto _ : state) {
        double dParse = 0;
        makeParsed<T>(state, &dParse, nullptr);
        state.SetIterationTime(dParse);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(getBatch(state.range(0))));
}

template <class T> void drop(benchmark::State& state) {
    for (auto _ : state) {
        double dDrop = 0;
        makeParsed<T>(state, nullptr, &dDrop);
        state.SetIterationTime(dDrop);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(getBatch(state.range(0))));
}

template <class T> void save(benchmark::State& state) {
    const auto aryDocument = makeParsed<T>(state, nullptr, nullptr);
    for (auto _ : state) {
        const CStopwatch stop;
        benchmark::DoNotOptimize(aryDocument[0]->save());
        state.SetIterationTime(stop.getSeconds());
    }
}

std::size_t getAllocated() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/** The result is a number of bytes, told as if it were a time in nanoseconds. */
template <class T> void bytesPerInputByte(benchmark::State& state) {
    const std::string& strXML = getInput(state.range(0));
    for (auto _ : state) {
        const std::size_t uiBefore = getAllocated();
        T document;
        document.parse(strXML);
        state.SetIterationTime(static_cast<double>(getAllocated() - uiBefore) / static_cast<double>(strXML.size()) *
                               1e-9);
    }
}

template <class T> void registerParser(const char* pName) {
    const std::string strName(pName);
    benchmark::RegisterBenchmark((strName + "_bytesPerInputByte").c_str(), bytesPerInputByte<T>)
        ->Arg(10000)
        ->UseManualTime()
        ->Iterations(1);
    for (const int iKilobytes : {6, 10000}) {
        benchmark::RegisterBenchmark((strName + "_parse").c_str(), parse<T>)->Arg(iKilobytes)->UseManualTime();
        benchmark::RegisterBenchmark((strName + "_drop").c_str(), drop<T>)->Arg(iKilobytes)->UseManualTime();
        benchmark::RegisterBenchmark((strName + "_save").c_str(), save<T>)->Arg(iKilobytes)->UseManualTime();
    }
}

const bool g_bRegistered = [] {
    registerParser<OrlixXML>("CXMLParser");
    registerParser<TinyXml2>("TinyXml2");
    registerParser<LibXml2>("LibXml2");
    registerParser<QDom>("QDomDocument");
    registerParser<Wptree>("Wptree");
    registerParser<PugiXml>("PugiXml");
    for (const int iKilobytes : {6, 10000}) {
        benchmark::RegisterBenchmark("Floor_parse", parse<Floor>)->Arg(iKilobytes)->UseManualTime();
        benchmark::RegisterBenchmark("Floor_drop", drop<Floor>)->Arg(iKilobytes)->UseManualTime();
    }
    for (const int iKilobytes : {1000, 100000}) { // with the 10,000 above: time is linear in the input
        benchmark::RegisterBenchmark("CXMLParser_parse", parse<OrlixXML>)->Arg(iKilobytes)->UseManualTime();
        benchmark::RegisterBenchmark("CXMLParser_save", save<OrlixXML>)->Arg(iKilobytes)->UseManualTime();
    }
    return true;
}();
} // namespace
