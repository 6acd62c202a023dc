// SPDX-License-Identifier: Apache-2.0
// Settings and views, the address, keys and mouse. CMake puts this file behind the others of its kind.

// ---- settings and views

function showView(number) {
    const isNew = shown !== views[number];
    state.view = number;
    shown = views[number];
    byId("view").value = String(number);
    if (isNew) {
        draw();
        fit();
    }
    showPath(state.path);
    markMatches();
    choose(state.chosen);
}

function showSettingNumber(number) {
    const stream = views.length > 0 ? views[state.view].stream : data.stream;
    state.setting = number;
    views = data.settings[number][3].map(readView);
    byId("setting").value = String(number);
    byId("view").replaceChildren(...views.map((view, i) => option(view.name, i)));
    if (state.search !== "") matches = findMatches(state.search);
    state.hit = -1;
    showView(Math.max(0, views.findIndex((view) => view.stream === stream)));
}
function stepSetting(step) {
    const count = data.settings.length;
    showSettingNumber((state.setting + step + count) % count);
}

// ---- the state in the address, so that it can be kept and passed on

let isRestoring = false, waiting = 0;
// Not at once: browsers limit how often an address may change.
function remember() {
    if (isRestoring) return;
    clearTimeout(waiting);
    waiting = setTimeout(writeAddress, 150);
}
function writeAddress() {
    const parts = new URLSearchParams();
    const key = data.settings[state.setting][0];
    if (key !== null) parts.set("setting", key);
    if (shown.stream !== null) parts.set("stream", shown.stream);
    for (const name of ["chosen", "search", "path"]) if (state[name] !== "") parts.set(name, state[name]);
    try {
        history.replaceState(null, "", "#" + parts);
    } catch {
        // some browsers keep the address of local files as it is
    }
}
function restore() {
    isRestoring = true;
    const parts = new URLSearchParams(location.hash.slice(1));
    const key = parts.get("setting");
    const setting = data.settings.findIndex((candidate) => String(candidate[0]) === key);
    Object.assign(state, {chosen: parts.get("chosen") ?? "", path: parts.get("path") ?? ""});
    showSettingNumber(Math.max(0, setting));
    const view = views.findIndex((candidate) => String(candidate.stream) === parts.get("stream"));
    if (parts.has("stream") && view >= 0) {
        Object.assign(state, {chosen: parts.get("chosen") ?? "", path: parts.get("path") ?? ""});
        showView(view);
    }
    byId("search").value = parts.get("search") ?? "";
    search(byId("search").value);
    isRestoring = false;
    remember();
}

// ---- what people do

function forget() {
    byId("search").value = "";
    search("");
    showPath("");
    choose("");
}

const ARROWS = {ArrowLeft: [60, 0], ArrowRight: [-60, 0], ArrowUp: [0, 60], ArrowDown: [0, -60]};
const ACTIONS = {
    "+": () => zoomBy(ZOOM_STEP), "=": () => zoomBy(ZOOM_STEP), "-": () => zoomBy(1 / ZOOM_STEP), "0": fit,
    "/": () => byId("search").focus(), "<": () => stepSetting(-1), ">": () => stepSetting(1),
    p: () => togglePath(), Escape: forget,
};

function onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const isField = event.target.matches("input, select");
    if (event.key === "Escape") {
        forget();
        if (isField) byId("picture").focus();
        return;
    }
    if (isField) return;
    const node = event.target.closest?.(".node");
    if (node && (event.key === "Enter" || event.key === " ")) {
        choose(shown.nodes[Number(node.dataset.node)].path);
    } else if (Object.hasOwn(ARROWS, event.key) && byId("stage").contains(event.target)) {
        moveBy(...ARROWS[event.key]);
    } else if (Object.hasOwn(ACTIONS, event.key)) {
        ACTIONS[event.key]();
    } else {
        return;
    }
    event.preventDefault();
}

function onClick(event) {
    const node = event.target.closest(".node");
    if (!node) return choose("");
    const port = event.target.closest(".port");
    choose(endPath(Number(node.dataset.node), port ? Number(port.dataset.port) : -1));
}

function followPointer(picture) {
    let start = null, moved = false;
    picture.addEventListener("pointerdown", (event) => {
        if (event.button !== 0) return;
        start = {x: event.clientX, y: event.clientY};
        moved = false;
    });
    picture.addEventListener("pointermove", (event) => {
        if (start === null) return;
        const x = event.clientX - start.x, y = event.clientY - start.y;
        if (!moved && Math.hypot(x, y) < 4) return;
        if (!moved) picture.setPointerCapture(event.pointerId);
        moved = true;
        picture.classList.add("moving");
        moveBy(x, y);
        start = {x: event.clientX, y: event.clientY};
    });
    const end = () => {
        start = null;
        picture.classList.remove("moving");
    };
    picture.addEventListener("pointerup", end);
    picture.addEventListener("pointercancel", end);
    picture.addEventListener("click", (event) => { if (!moved) onClick(event); });
    picture.addEventListener("wheel", (event) => {
        event.preventDefault();
        const box = picture.getBoundingClientRect();
        const lines = event.deltaMode === 0 ? event.deltaY / 100 : event.deltaY / 3;
        zoomAt(Math.pow(ZOOM_STEP, -lines), event.clientX - box.left, event.clientY - box.top);
    }, {passive: false});
}

function start() {
    byId("files").textContent = data.files.map((file) => shortPlace(text(file))).join("  +  ");
    byId("files").title = data.files.map(text).join("\n");
    byId("setting").replaceChildren(...data.settings.map((setting, i) => option(settingTitle(setting), i)));
    byId("setting").addEventListener("change", (event) => showSettingNumber(Number(event.target.value)));
    byId("view").addEventListener("change", (event) => showView(Number(event.target.value)));
    byId("path").addEventListener("change", (event) => showPath(event.target.value));
    byId("search").addEventListener("input", (event) => search(event.target.value));
    byId("search").addEventListener("keydown", (event) => {
        if (event.key === "Enter") nextMatch(event.shiftKey ? -1 : 1);
    });
    byId("zoom-in").addEventListener("click", () => zoomBy(ZOOM_STEP));
    byId("zoom-out").addEventListener("click", () => zoomBy(1 / ZOOM_STEP));
    byId("fit").addEventListener("click", fit);
    byId("help").addEventListener("click", () => {
        byId("legend").hidden = !byId("legend").hidden;
        byId("help").setAttribute("aria-expanded", String(!byId("legend").hidden));
    });
    byId("picture").addEventListener("focusin", (event) => {
        const node = event.target.closest(".node"); // what listens for focus can get it, so this is not up to the nodes
        const isByKeyboard = node && event.target.matches(":focus-visible");
        if (isByKeyboard && !isInSight(shown.nodes[Number(node.dataset.node)])) lookAt(shown.nodes[Number(node.dataset.node)]);
    });
    followPointer(byId("picture"));
    document.addEventListener("keydown", onKey);
    window.addEventListener("hashchange", restore);
    restore();
    document.body.dataset.ready = "yes";
}
start();
