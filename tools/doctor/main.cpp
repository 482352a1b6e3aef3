#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "platform/linux/LinuxEnvironment.h"
#include "tools/PrintableText.h"
#include "tools/doctor/Abilities.h"
#include "tools/doctor/FolderSurvey.h"
#include "tools/doctor/WatchUsage.h"
#include "workspace/PathComponents.h"

namespace {

constexpr int somethingWrong = 1;
constexpr int usageError = 2;

constexpr auto usage =
    "usage: EditorDocumentDoctor [FOLDER]\n"
    "Explains what of this machine matters to EditorDocumentDaemon when it watches the folder, or the current one.\n"
    "The status is 0 when all is fine, and 1 when something is wrong.\n";

std::vector<Chapter> examine(const std::string& folderPath) {
    const LinuxEnvironment environment;
    const FolderSurvey survey = surveyFolder(folderPath);
    std::vector<Chapter> chapters{{"The folder", folderFindings(survey, folderPath)}};
    if (survey.error != 0) return chapters;
    chapters.push_back({"File systems", fileSystemFindings(survey)});
    chapters.push_back({"Watches", watchFindings(readWatchLimits("/proc"), readWatchUsage("/proc", ::getuid()),
                                                 ::getuid(), survey.folderCount)});
    chapters.push_back({"Events", eventFindings(folderPath)});
    chapters.push_back({"Language", languageFindings(environment)});
    chapters.push_back({"Trash", trashFindings(environment, folderPath)});
    return chapters;
}

class Report {
public:
    Report()
        : characters(charactersOfTerminal()), isColoured(::isatty(STDOUT_FILENO) == 1 && !std::getenv("NO_COLOR")) {}

    void print(const Chapter& chapter) const {
        std::cout << chapter.title << '\n';
        for (const Finding& finding : chapter.findings) {
            std::cout << mark(finding.verdict) << printable(finding.text, characters) << '\n';
            for (const std::string& detail : finding.details) printBelow("", detail);
            for (const std::string& command : finding.remedy) printBelow("Type: ", command);
        }
        std::cout << '\n';
    }

private:
    std::string mark(Finding::Verdict verdict) const {
        const auto coloured = [&](const std::string& text, const std::string& colour) {
            return isColoured ? "\x1B[" + colour + "m" + text + "\x1B[0m" : text;
        };
        switch (verdict) {
            case Finding::Verdict::fine:
                return coloured("  fine   ", "32");
            case Finding::Verdict::worthKnowing:
                return coloured("  note   ", "36");
            case Finding::Verdict::wrong:
                return coloured("  WRONG  ", "1;31");
        }
        return "";
    }

    void printBelow(const std::string& introduction, const std::string& text) const {
        std::cout << "         " << introduction << printable(text, characters) << '\n';
    }

    TerminalCharacters characters;
    bool isColoured;
};

} // namespace

int main(int argumentCount, char** arguments) {
    const std::string argument = argumentCount > 1 ? arguments[1] : ".";
    if (argumentCount > 2 || argument.starts_with('-')) {
        const bool isAskedFor = argument == "--help";
        (isAskedFor ? std::cout : std::cerr) << usage;
        return isAskedFor ? EXIT_SUCCESS : usageError;
    }
    const Report report;
    bool isAnythingWrong = false;
    for (const Chapter& chapter : examine(standardizedPath(std::filesystem::absolute(argument).string()))) {
        report.print(chapter);
        isAnythingWrong |= std::ranges::count(chapter.findings, Finding::Verdict::wrong, &Finding::verdict) > 0;
    }
    std::cout << (isAnythingWrong ? "Something is wrong.\n" : "All is fine.\n");
    return isAnythingWrong ? somethingWrong : EXIT_SUCCESS;
}
