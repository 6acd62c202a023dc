// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_SCENE_LAYOUT_H
#define NUXO_TOOL_DRAW_SCENE_LAYOUT_H

#include "Session.h"
#include "draw/Scene.h"

#include <map>
#include <string>

namespace NuxoTool {

// Heights of what nodes consist of, from top to bottom, in pixels. The page draws with the same.
constexpr int kNodePadding = 5; ///< above the name and below the last line
constexpr int kNameHeight = 16; ///< of the name
constexpr int kLineHeight = 12; ///< of each line below
constexpr int kPortHeight = 18; ///< of a row of ports, without the lines below their names

/// Gives scenes their places. Scenes that differ in nothing that matters for places are laid out once.
class SceneLayout {
public:
    explicit SceneLayout(Session& session) : mSession(session) {}

    /// Lays out a scene by graphviz's dot.
    ///
    /// @return false, with a finding, when that failed
    bool place(Scene& scene);

private:
    bool layOutNew(const std::string& question, Scene& scene);

    Session& mSession;
    std::map<std::string, Scene> mKnown; ///< by what dot is told
};

} // namespace NuxoTool

#endif
