// SPDX-License-Identifier: Apache-2.0
// Choosing a box or port, and what is told of it.

// A node, or "node:port" of one, of a view.
function find(view, path) {
    for (let node = 0; node < view.nodes.length; ++node) {
        const box = view.nodes[node];
        if (box.path === path) return {node, port: -1};
        if (!path.startsWith(box.path + ":")) continue;
        const port = box.ports.findIndex((candidate) => box.path + ":" + candidate.name === path);
        if (port >= 0) return {node, port};
    }
    return null;
}
const endPath = (node, port) => shown.nodes[node].path + (port < 0 ? "" : ":" + shown.nodes[node].ports[port].name);

function choose(path) {
    state.chosen = path;
    for (const element of document.querySelectorAll(".chosen")) element.classList.remove("chosen");
    const place = path === "" ? null : find(shown, path);
    if (place === null) {
        state.chosen = "";
        showSetting();
    } else {
        elements[place.node].group.classList.add("chosen");
        if (place.port >= 0) elements[place.node].ports[place.port].classList.add("chosen");
        showDetails(place);
    }
    remember();
}

// A cell with a path that may go on in the next line behind a colon.
function breakable(path) {
    const cell = html("td");
    path.split(":").forEach((name, i) => cell.append(...(i > 0 ? [":", html("wbr"), name] : [name])));
    return cell;
}

function attributeTable(item) {
    const table = html("table"), head = html("tr");
    for (const name of ["Attribute", "Value", "Origin"]) head.append(html("th", name));
    table.append(head);
    for (const attribute of item.attributes) {
        const row = html("tr");
        const origin = html("td", shortPlace(attribute.place) || "added by the library");
        origin.title = attribute.place;
        row.append(breakable(attribute.name), html("td", attribute.value), origin);
        table.append(row);
    }
    return table;
}
function listOf(entries) {
    const list = html("ul");
    for (const entry of entries) {
        const element = html("li");
        element.append(...entry);
        list.append(element);
    }
    return list;
}
function section(panel, title, entries) {
    if (entries.length > 0) panel.append(html("h3", title), listOf(entries));
}
const goTo = (path) => button(path, () => { choose(path); reveal(path); });

function connectionsOf(place) {
    const isHere = (node, port) => node === place.node && (place.port < 0 || port === place.port);
    const note = (edge) => (edge.label ? " " + edge.label : "") + (edge.off ? " (disabled)" : "");
    return {
        from: shown.edges.filter((edge) => isHere(edge.to, edge.toPort))
            .map((edge) => [goTo(endPath(edge.from, edge.fromPort)), note(edge)]),
        to: shown.edges.filter((edge) => isHere(edge.from, edge.fromPort))
            .map((edge) => [goTo(endPath(edge.to, edge.toPort)), note(edge)]),
    };
}

// The same element, or what is inside of it, in the other views.
function otherViews(path) {
    const entries = [];
    views.forEach((view, number) => {
        if (view === shown) return;
        const same = find(view, path);
        const inside = view.nodes.find((node) => node.path.startsWith(path + ":"));
        const target = same ? path : inside && !HAS_OWN_BOX.has(shown.nodes[0].kind) ? inside.path : null;
        if (target !== null) entries.push([button(view.name, () => { showView(number); choose(target); reveal(target); })]);
    });
    return entries;
}

function showDetails(place) {
    const node = shown.nodes[place.node], port = place.port < 0 ? null : node.ports[place.port];
    const number = port ? port.item : node.item;
    const panel = byId("details"), path = endPath(place.node, place.port);
    panel.replaceChildren(html("h2", path));
    if (number >= 0) {
        const item = readItem(number);
        panel.append(html("p", item.kind + (item.place ? " at " + item.place : "")));
    } else {
        panel.append(html("p", "a peer that names nothing in the graph"));
    }
    const isEnd = !port && shown.edges.some((edge) => edge.to === place.node);
    if (isEnd) panel.append(button(state.path === path ? "Hide the path to it" : "Show the path to it", togglePath));
    section(panel, "Views", otherViews(path));
    if (!port) {
        section(panel, "Ports", node.ports.map((own) => [goTo(node.path + ":" + own.name),
            (own.output ? " output" : " input") + own.lines.map((line) => ", " + line).join("") + (own.off ? " (disabled)" : "")]));
        section(panel, "Kernels", kernelsOf(node.path));
    } else {
        section(panel, "Port of", [[goTo(node.path)]]);
    }
    const connections = connectionsOf(place);
    section(panel, "Frames come from", connections.from);
    section(panel, "Frames go to", connections.to);
    if (number >= 0) panel.append(html("h3", "Attributes"), attributeTable(readItem(number)));
}

function kernelsOf(path) {
    if (shown.stream !== null) return [];
    const entries = [];
    views.forEach((view, number) => {
        for (const node of view.nodes) {
            if (node.kind !== "kernel" || !node.path.startsWith(path + ":")) continue;
            const go = () => { showView(number); choose(node.path); reveal(node.path); };
            entries.push([button(node.name, go), " " + node.lines.join(", ")]);
        }
    });
    return entries;
}

const settingTitle = (setting) => (setting[0] === null ? "setting without key" : String(setting[0])) +
    (text(setting[1]) ? "  " + text(setting[1]) : "");

function showSetting() {
    const setting = data.settings[state.setting], item = readItem(setting[2]);
    const panel = byId("details");
    panel.replaceChildren(html("h2", item.path), html("p", item.place));
    section(panel, "Views", views.map((view, number) => [button(view.name, () => showView(number)),
        ` ${view.nodes.length} boxes, ${view.edges.length} connections`]));
    panel.append(html("h3", "Attributes"), attributeTable(item));
}
