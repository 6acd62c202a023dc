// SPDX-License-Identifier: Apache-2.0
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "KernelView.h"
#include "Origins.h"
#include "RecordText.h"
#include "Text.h"
#include "TextTable.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

std::string metadataText(const qv_isp_zmt_run_kernels& record)
{
    std::string text;
    for (const uint32_t item : record.metadata) text += (text.empty() ? "" : ",") + std::to_string(item);
    return text;
}

std::string bppText(const qv_isp_zmt_bpp_info& bpp)
{
    return std::to_string(bpp.input_bpp) + '/' + std::to_string(bpp.output_bpp);
}

using Cells = std::vector<std::string>;

Cells resolutionCells(const KernelView::Output& output)
{
    const qv_isp_zmt_resolution_info& info = output.resolution;
    return {output.name, sizeText(info.input_width, info.input_height), cropText(info.input_crop),
            sizeText(info.output_width, info.output_height), cropText(info.output_crop)};
}

Cells historyCells(const std::optional<qv_isp_zmt_resolution_info>& history)
{
    if (!history) return {"-", "-", "-"};
    return {sizeText(history->input_width, history->input_height), cropText(history->input_crop),
            sizeText(history->output_width, history->output_height)};
}

void addKernel(TextTable& table, const GroupView& group, const KernelView& kernel)
{
    const Cells head = {orDash(group.stream),
                        printable(group.name),
                        orDash(printable(kernel.name)),
                        orDash(kernel.id),
                        std::to_string(kernel.record.kernel_uuid),
                        stateText(kernel.record.enable)};
    std::vector<Cells> outputs;
    for (const KernelView::Output& output : kernel.outputs) outputs.push_back(resolutionCells(output));
    if (outputs.empty()) outputs.push_back({"-", "-", "-", "-", "-"});
    for (const Cells& output : outputs) {
        Cells cells = head;
        cells.insert(cells.end(), output.begin(), output.end());
        const Cells history = historyCells(kernel.history);
        cells.insert(cells.end(), history.begin(), history.end());
        cells.push_back(metadataText(kernel.record));
        cells.push_back(bppText(kernel.record.bpp_info));
        table.add(cells);
    }
}

std::string render(const std::vector<GroupView>& groups)
{
    if (groups.empty()) return "";
    constexpr TextTable::Align right = TextTable::Align::Right;
    TextTable table({{"STREAM"},
                     {"GROUP"},
                     {"KERNEL"},
                     {"ID", right},
                     {"UUID", right},
                     {"STATE"},
                     {"OUTPUT"},
                     {"IN"},
                     {"IN CROP"},
                     {"OUT"},
                     {"OUT CROP"},
                     {"SOURCE"},
                     {"SOURCE CROP"},
                     {"ARRIVES"},
                     {"METADATA"},
                     {"BPP"}});
    for (const GroupView& group : groups) {
        for (const KernelView& kernel : group.kernels) addKernel(table, group, kernel);
    }
    return table.text();
}

JsonValue jsonKernel(Session& session, const KernelView& kernel)
{
    JsonValue json;
    json["name"] = jsonOrNull(kernel.name);
    json["id"] = jsonOrNull(kernel.id);
    json["stream_id"] = kernel.record.stream_id;
    json["kernel_uuid"] = kernel.record.kernel_uuid;
    json["enable"] = kernel.record.enable;
    json["state"] = stateText(kernel.record.enable);
    json["output_count"] = kernel.record.output_count;
    json["resolutions"] = JsonValue::array();
    for (const KernelView::Output& output : kernel.outputs) {
        JsonValue resolution;
        resolution["output"] = output.name;
        resolution.update(jsonResolution(output.resolution));
        json["resolutions"].push_back(resolution);
    }
    json["history"] = kernel.history ? jsonResolution(*kernel.history) : JsonValue(nullptr);
    json["metadata"] = kernel.record.metadata;
    json["input_bpp"] = kernel.record.bpp_info.input_bpp;
    json["output_bpp"] = kernel.record.bpp_info.output_bpp;
    json["where"] = kernel.item == nullptr ? JsonValue(nullptr) : jsonLocation(originOf(session.locator, *kernel.item));
    return json;
}

std::string renderJson(Session& session, const BuiltGraph& built, const std::vector<GroupView>& groups)
{
    JsonValue document = jsonOfSetting(session, "kernels", *built.settings);
    document["groups"] = JsonValue::array();
    for (const GroupView& group : groups) {
        JsonValue json;
        json["name"] = group.name;
        json["stream_id"] = jsonOrNull(group.stream);
        json["operation_mode"] = group.mode;
        json["kernels"] = JsonValue::array();
        for (const KernelView& kernel : group.kernels) json["kernels"].push_back(jsonKernel(session, kernel));
        json["where"] = jsonLocation(originOf(session.locator, *group.item));
        document["groups"].push_back(json);
    }
    return jsonText(document);
}

} // namespace

void runKernels(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built) return;
    const size_t errors = session.findings.errorCount();
    const std::vector<GroupView> groups = viewKernels(session, built);
    if (groups.empty()) {
        if (session.findings.errorCount() > errors) return;
        session.findings.note(
            inFile(session.arguments.settings),
            settingName(*built.settings) + " has no program group" +
                (session.arguments.stream ? " in stream " + std::to_string(*session.arguments.stream) : ""));
    }
    session.output = session.arguments.format == Format::Json ? renderJson(session, built, groups) : render(groups);
}

} // namespace NuxoTool
