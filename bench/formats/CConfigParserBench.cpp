// Loading the complete configuration file from disk, into settings that a program can read.
//
// The peers read the same settings: QSettings from an INI file with the same keys, XMLConfiguration from the same XML
// but for the comments. Each looks up one value, so that reading lazily does not count as reading.
#include <Orlix/formats/CConfigParser.h>
#include <Orlix/formats/CXMLElement.h>
#include <Orlix/foundation/CStringConverter.h>

#include <Poco/AutoPtr.h>
#include <Poco/Util/XMLConfiguration.h>
#include <QSettings>
#include <QString>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using Orlix::CConfigParser;
using Orlix::CString;
using Orlix::CStringConverter;
using Orlix::CXMLElement;

namespace {

CString widen(const std::string& strText) {
    CString strResult;
    CStringConverter::convertFromMBCS(strText.c_str(), strResult);
    return strResult;
}

std::string narrow(const CString& strText) {
    std::string strResult(strText.length() * 3 + 1, '\0');
    CStringConverter::convertToMBCS(strText, &strResult[0], static_cast<unsigned int>(strResult.size()));
    return strResult.c_str();
}

/** The INI form of the shipped file: one key for each attribute. */
void writeIni(CXMLElement& xmlElement, const std::string& strPrefix, std::ofstream& file) {
    for (unsigned int i = 0; i < xmlElement.getAttributeCount(); ++i) {
        const CString& strName = xmlElement.getAttributeNameByIndex(i);
        file << strPrefix << narrow(strName) << '='
             << narrow(xmlElement.getAttributeString(strName, Orlix::STRING_NULL)) << '\n';
    }
    for (unsigned int i = 0; CXMLElement* const pChild = xmlElement.getChildAt(i); ++i)
        writeIni(*pChild, strPrefix + narrow(pChild->getName()) + std::to_string(i) + "\\", file);
}

const std::string& getIniPath() {
    static const std::string s_strPath = [] {
        std::string strPath = "/tmp/orlix-bench-" + std::to_string(getpid()) + ".ini";
        Orlix::CXMLParser xmlDocument;
        xmlDocument.parseFromFile(widen(ORLIX_ENGINE_XML));
        std::ofstream file(strPath);
        file << "[engine]\n";
        writeIni(*xmlDocument.getRootElement(), "", file);
        std::atexit([] { std::remove(getIniPath().c_str()); });
        return strPath;
    }();
    return s_strPath;
}

void CConfigParser_load(benchmark::State& state) {
    const CString strPath = widen(ORLIX_ENGINE_XML);
    for (auto _ : state) {
        CConfigParser config;
        if (!config.load(strPath))
            state.SkipWithError("the file does not load");
        benchmark::DoNotOptimize(config.getAnimationParam().fps);
    }
}
BENCHMARK(CConfigParser_load);

void QSettings_load(benchmark::State& state) {
    // Contents are kept by path, size and time, so each turn gives the file another time; that is some 1 us of it.
    const std::string& strIni = getIniPath();
    timespec aryTimes[2] = {{1, 0}, {1, 0}};
    for (auto _ : state) {
        ++aryTimes[1].tv_sec;
        utimensat(AT_FDCWD, strIni.c_str(), aryTimes, 0);
        QSettings settings(QString::fromStdString(strIni), QSettings::IniFormat);
        benchmark::DoNotOptimize(settings.value("engine/animation_param12/fps").toUInt());
    }
}
BENCHMARK(QSettings_load);

void PocoXML_load(benchmark::State& state) {
    for (auto _ : state) {
        const Poco::AutoPtr<Poco::Util::XMLConfiguration> ptrConfig(
            new Poco::Util::XMLConfiguration(std::string(ORLIX_ENGINE_XML)));
        benchmark::DoNotOptimize(ptrConfig->getUInt("animation_param[@fps]"));
    }
}
BENCHMARK(PocoXML_load);
} // namespace
