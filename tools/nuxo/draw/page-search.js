// SPDX-License-Identifier: Apache-2.0
// The search.

// Boxes and ports of the whole graph, and what only the insides of streams have. The view on show comes first.
function findMatches(query) {
    const found = [];
    const wanted = query.toLowerCase();
    const add = (view, path) => {
        if (path.toLowerCase().includes(wanted)) found.push({view, path});
    };
    views.forEach((view, number) => {
        for (const node of view.nodes) {
            if (view.stream === null || view === shown || (node.cluster >= 0 && !HAS_OWN_BOX.has(node.kind))) {
                add(number, node.path);
            }
            for (const port of node.ports) add(number, node.path + ":" + port.name);
        }
    });
    const isHere = (match) => views[match.view] === shown;
    const isOwn = (match) => match.path.slice(match.path.lastIndexOf(":") + 1).toLowerCase().includes(wanted);
    const named = found.filter(isOwn); // rather than all ports of a box that is found itself
    const known = new Set();
    return [...named.filter(isHere), ...named.filter((match) => !isHere(match))].filter((match) => {
        const isNew = !known.has(match.path);
        known.add(match.path);
        return isNew;
    });
}

function markMatches() {
    byId("picture").classList.toggle("searching", matches.length > 0);
    const paths = new Set(matches.map((match) => match.path));
    elements.forEach((element, number) => {
        const node = shown.nodes[number];
        const isHit = paths.has(node.path);
        const isHolder = [...paths].some((path) => path.startsWith(node.path + ":"));
        element.group.classList.toggle("match", isHit || isHolder);
        element.group.classList.toggle("hit", isHit);
        element.ports.forEach((port, i) => port.classList.toggle("match", paths.has(node.path + ":" + node.ports[i].name)));
    });
    const position = state.hit < 0 ? "" : `${state.hit + 1} of `;
    byId("found").textContent = state.search === "" ? "" : matches.length === 0 ? "not found"
        : position + matches.length + (position ? "" : " found");
}

function search(query) {
    state.search = query.trim();
    state.hit = -1;
    matches = state.search === "" ? [] : findMatches(state.search);
    markMatches();
    remember();
}

function nextMatch(step) {
    if (matches.length === 0) return;
    state.hit = state.hit < 0 && step < 0 ? matches.length - 1 : (state.hit + step + matches.length) % matches.length;
    const match = matches[state.hit];
    if (!find(shown, match.path)) showView(match.view);
    choose(match.path);
    reveal(match.path);
    markMatches();
}
function reveal(path) {
    const place = find(shown, path);
    if (place) lookAt(shown.nodes[place.node]);
}
