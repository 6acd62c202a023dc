// SPDX-License-Identifier: Apache-2.0
#include "Criteria.h"
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "LibraryFindings.h"
#include "LibraryLog.h"
#include "TextTable.h"
#include "verbs/Verbs.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/frame_params/GraphLumUtil.h>

#include <utility>

namespace NuxoTool {

namespace {

using Fields = std::vector<std::pair<const char*, uint32_t>>;

Fields fieldsOf(const qv_lum_frame_params& params)
{
    return {
        {"horizontal_crop_offset", params.horizontal_crop_offset},
        {"vertical_crop_offset", params.vertical_crop_offset},
        {"cropped_image_width", params.cropped_image_width},
        {"cropped_image_height", params.cropped_image_height},
        {"horizontal_scaling_numerator", params.horizontal_scaling_numerator},
        {"horizontal_scaling_denominator", params.horizontal_scaling_denominator},
        {"vertical_scaling_numerator", params.vertical_scaling_numerator},
        {"vertical_scaling_denominator", params.vertical_scaling_denominator},
    };
}

std::string render(const Fields& fields)
{
    TextTable table({{"FIELD"}, {"VALUE", TextTable::Align::Right}});
    for (const auto& [name, value] : fields) table.add({name, std::to_string(value)});
    return table.text();
}

std::string renderJson(Session& session, const BuiltGraph& built, const Fields& fields)
{
    JsonValue document = jsonOfSetting(session, "frame-params", *built.settings);
    document["port"] = jsonOrNull(session.arguments.port);
    for (const auto& [name, value] : fields) document["frame_params"][name] = value;
    return jsonText(document);
}

int readParams(const Session& session, const BuiltGraph& built, qv_lum_frame_params& params)
{
    const std::optional<std::string>& port = session.arguments.port;
    return port ? NUXO::GraphLumUtil::getPortFrameParams(params, built.owner, *port)
                : NUXO::GraphLumUtil::getSensorFrameParams(params, built.owner);
}

} // namespace

void runFrameParams(Session& session)
{
    GraphRequest request(session);
    const std::optional<std::string>& port = session.arguments.port;
    if (request.isReady() && port && !checkNames(*port, *port, "bad-path", session.findings)) return;
    const BuiltGraph built = request.build();
    if (!built) return;

    takeLibraryLog();
    qv_lum_frame_params params = {};
    const int status = readParams(session, built, params);
    const LogContext context = {"frame-params", built.settings, "", 0};
    if (status != StatusOk) {
        const std::string what = port ? "port " + *port : "the sensor";
        reportFailure(session, context, "reading the frame of " + what, status,
                      port ? "a port with its size" : "a sensor with its sizes");
        return;
    }
    reportLogLines(session, context);
    const Fields fields = fieldsOf(params);
    session.output = session.arguments.format == Format::Json ? renderJson(session, built, fields) : render(fields);
}

} // namespace NuxoTool
