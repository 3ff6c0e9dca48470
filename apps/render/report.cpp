#include "render/report.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "parameters/parameter_table.h"

namespace norava {

namespace {

using Json = nlohmann::ordered_json;

template <typename... Values>
std::string Text(const char* format, Values... values) {
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

double PeakDecibels(const RenderResult& result) {
    return 20.0 * std::log10(result.peak);
}

double TimesRealTime(const RenderResult& result) {
    return result.seconds / result.renderSeconds;
}

std::string Level(double level, const char* unit) {
    return std::isfinite(level) ? Text("%.1f %s", level, unit) : std::string("silence");
}

// Infinite levels have no number in JSON; null says that there is no sound.
Json JsonLevel(double level) {
    return std::isfinite(level) ? Json(level) : Json(nullptr);
}

void WriteText(std::ostream& out, const RenderTask& task, const RenderResult& result) {
    const std::string name = task.output.empty() ? task.Name() : task.output.string();
    out << name << "\n"
        << "  length    " << Text("%.2f s", result.seconds) << "\n"
        << "  peak      " << Level(PeakDecibels(result), "dBFS") << "\n"
        << "  loudness  "
        << (result.loudness ? Level(*result.loudness, "LUFS") : "not measured at such a rate")
        << "\n"
        << "  rendered  "
        << Text("in %.2f s, %.1f times real time", result.renderSeconds, TimesRealTime(result))
        << "\n";
    if (result.gainDecibels != 0.0) {
        out << "  gain      " << Text("%+.1f dB on what the engine rendered", result.gainDecibels)
            << "\n";
    }
    if (result.tailCutShort) {
        out << "  tail      still sounding after a minute, and cut (--tail SECONDS keeps more)\n";
    }
}

Json ToJson(const RenderTask& task, const Outcome& outcome) {
    Json json = {{"input", task.input.string()}};
    if (!task.program.empty()) json["program"] = task.program;
    if (!outcome.result) {
        json["error"] = outcome.error;
        return json;
    }
    const RenderResult& result = *outcome.result;
    if (!task.output.empty()) json["output"] = task.output.string();
    json["seconds"] = result.seconds;
    json["peakDbfs"] = JsonLevel(PeakDecibels(result));
    json["loudnessLufs"] = result.loudness ? JsonLevel(*result.loudness) : Json(nullptr);
    json["gainDb"] = result.gainDecibels;
    json["tailCutShort"] = result.tailCutShort;
    json["renderSeconds"] = result.renderSeconds;
    json["timesRealTime"] = TimesRealTime(result);
    if (!result.hash.empty()) json["sha256"] = result.hash;
    return json;
}

}  // namespace

void WriteReport(std::ostream& out, const Options& options, const std::vector<RenderTask>& tasks,
                 const std::vector<Outcome>& outcomes) {
    Json list = Json::array();
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        if (options.json) {
            list.push_back(ToJson(tasks[i], outcomes[i]));
            continue;
        }
        const auto& result = outcomes[i].result;
        if (!result) continue;
        if (!options.quiet) WriteText(out, tasks[i], *result);
        if (!result->hash.empty()) out << result->hash << "  " << tasks[i].Name() << "\n";
    }
    constexpr auto kReplaceBadText = Json::error_handler_t::replace;
    if (options.json) out << list.dump(2, ' ', false, kReplaceBadText) << "\n";
}

void WriteParameterList(std::ostream& out, bool json) {
    Json list = Json::array();
    for (const Parameter& parameter : kParameters) {
        if (json) {
            Json row = {{"number", parameter.index},
                        {"name", parameter.name},
                        {"default", parameter.defaultValue}};
            if (!parameter.items.empty()) row["menu"] = parameter.items;
            list.push_back(row);
            continue;
        }
        out << Text("%3d  %-20s  %-4g", parameter.index, parameter.name,
                    double(parameter.defaultValue));
        for (std::size_t item = 0; item < parameter.items.size(); ++item) {
            out << (item == 0 ? "  " : ", ") << item << " = " << parameter.items[item];
        }
        out << "\n";
    }
    if (json) out << list.dump(2) << "\n";
}

void WriteProgramList(std::ostream& out, const std::vector<NamedProgram>& programs, bool json) {
    Json list = Json::array();
    int category = -1;
    int number = 0;
    for (std::size_t i = 0; i < programs.size(); ++i) {
        const NamedProgram& program = programs[i];
        const bool isNew = i == 0 || programs[i - 1].category != program.category;
        category += isNew ? 1 : 0;
        number = isNew ? 0 : number + 1;
        if (!json) out << program.FullName() << "\n";
        list.push_back({{"category", program.category},
                        {"name", program.name},
                        {"categoryNumber", category},
                        {"programNumber", number}});
    }
    if (json) out << list.dump(2) << "\n";
}

}  // namespace norava
