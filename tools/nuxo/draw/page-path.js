// SPDX-License-Identifier: Apache-2.0
// The path of the frames to a sink.

// Everything that frames pass on their way to a node, against the direction of the connections.
function routeTo(target) {
    const route = {nodes: new Set([target]), edges: new Set(), ports: new Set()};
    const waiting = [[target, -1]], seen = new Set();
    while (waiting.length > 0) {
        const [node, port] = waiting.pop();
        if (seen.has(node + ":" + port)) continue;
        seen.add(node + ":" + port);
        shown.edges.forEach((edge, number) => {
            if (edge.to !== node || (port >= 0 && edge.toPort !== port) || edge.off || edge.missing) return;
            route.edges.add(number);
            route.nodes.add(edge.from);
            for (const end of [[edge.from, edge.fromPort], [edge.to, edge.toPort]]) route.ports.add(end.join(":"));
            for (const input of inputsFor(shown.nodes[edge.from], edge.fromPort)) waiting.push([edge.from, input]);
        });
    }
    return route;
}
// Through which inputs frames come that leave a node by one of its outputs.
function inputsFor(node, port) {
    if (port >= 0 && node.ports[port].inputs) return node.ports[port].inputs;
    const inputs = [];
    node.ports.forEach((candidate, number) => { if (!candidate.output && !candidate.off) inputs.push(number); });
    return node.ports.length === 0 ? [-1] : inputs;
}

// Nodes in the order in which frames pass them, step by step; those that feed each other make one step at the end.
function stepsOf(route) {
    const inner = [...route.edges].map((number) => shown.edges[number]).filter((edge) => !edge.feedback);
    const left = new Set(route.nodes), steps = [];
    while (left.size > 0) {
        const ready = [...left].filter((node) => !inner.some((edge) => edge.to === node && left.has(edge.from)));
        steps.push(ready.length > 0 ? ready : [...left]);
        for (const node of steps[steps.length - 1]) left.delete(node);
    }
    return steps;
}

function pathEnds(view) {
    const starts = new Set(view.edges.filter((edge) => !edge.feedback && !edge.missing).map((edge) => edge.from));
    const fed = new Set(view.edges.filter((edge) => !edge.missing).map((edge) => edge.to));
    return view.nodes.filter((node, number) => fed.has(number) && !starts.has(number)).map((node) => node.path);
}

function listPathEnds() {
    const ends = pathEnds(shown);
    if (state.path !== "" && !ends.includes(state.path) && find(shown, state.path)) ends.push(state.path);
    byId("path").replaceChildren(option("no path shown", ""), ...ends.map((path) => option(path, path)));
}

function showPath(path) {
    const place = path === "" ? null : find(shown, path);
    state.path = place === null ? "" : path;
    listPathEnds();
    byId("path").value = state.path;
    byId("picture").classList.toggle("routing", place !== null);
    const route = place === null ? {nodes: new Set(), edges: new Set(), ports: new Set()} : routeTo(place.node);
    elements.forEach((element, node) => {
        element.group.classList.toggle("on-path", route.nodes.has(node));
        element.ports.forEach((port, number) => port.classList.toggle("on-path", route.ports.has(node + ":" + number)));
    });
    edgeElements.forEach((element, number) => element.classList.toggle("on-path", route.edges.has(number)));
    const output = byId("route");
    output.hidden = place === null;
    output.textContent = route.nodes.size === 1 ? state.path + ": no frames arrive"
        : stepsOf(route).map((step) => step.map((node) => shown.nodes[node].path).join(" + ")).join(" \u2192 ");
    remember();
}
function togglePath() {
    showPath(state.path === state.chosen ? "" : state.chosen);
    const place = find(shown, state.chosen);
    if (place) showDetails(place);
}
