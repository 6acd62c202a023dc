// SPDX-License-Identifier: Apache-2.0
#include "Browser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMilliseconds = 60000;
constexpr int kCommandPipe = 3; // what the browser reads commands from
constexpr int kAnswerPipe = 4;  // and writes to
constexpr int kWidth = 1400;
constexpr int kHeight = 900;

// In the child: never returns.
[[noreturn]] void becomeBrowser(const std::string& directory, int commands, int answers)
{
    setpgid(0, 0); // its helpers end with it
    // Out of the way of the numbers that the browser expects.
    const int commandsAside = fcntl(commands, F_DUPFD, 10);
    const int answersAside = fcntl(answers, F_DUPFD, 10);
    dup2(commandsAside, kCommandPipe);
    dup2(answersAside, kAnswerPipe);
    for (const int descriptor : {commandsAside, answersAside}) close(descriptor);
    const int log = ::open((directory + "/browser.log").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    setenv("HOME", directory.c_str(), 1);
    const std::string profile = "--user-data-dir=" + directory + "/profile";
    const std::string size = "--window-size=" + std::to_string(kWidth) + ',' + std::to_string(kHeight);
    execlp("chromium", "chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
           "--no-first-run", "--disable-background-networking", "--disable-extensions", "--hide-scrollbars",
           "--remote-debugging-pipe", profile.c_str(), size.c_str(), "about:blank", nullptr);
    _exit(127);
}

int keyCode(const std::string& key)
{
    if (key == "Enter") return 13;
    if (key == "Tab") return 9;
    if (key == "Escape") return 27;
    if (key == "ArrowLeft") return 37;
    if (key == "ArrowRight") return 39;
    return 0;
}

std::string decodedBase64(const std::string& text)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const size_t value = alphabet.find(c);
        if (value == std::string::npos) break;
        bits = (bits << 6U | static_cast<unsigned>(value)) & 0xffffU;
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xffU);
    }
    return bytes;
}

} // namespace

Browser::Browser(const std::string& directory)
{
    signal(SIGPIPE, SIG_IGN); // a browser that ended is noticed by the write that fails
    int commands[2] = {-1, -1};
    int answers[2] = {-1, -1};
    if (pipe2(commands, O_CLOEXEC) != 0 || pipe2(answers, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipes";
        return;
    }
    mId = fork();
    if (mId == 0) becomeBrowser(directory, commands[0], answers[1]);
    close(commands[0]);
    close(answers[1]);
    mToBrowser = commands[1];
    mFromBrowser = answers[0];

    const Json target = call("Target.createTarget", {{"url", "about:blank"}});
    if (!target.contains("targetId")) {
        std::ifstream log(directory + "/browser.log");
        const std::string said((std::istreambuf_iterator<char>(log)), std::istreambuf_iterator<char>());
        ADD_FAILURE() << "chromium does not run; it must be installed (Debian: apt-get install chromium)\n" << said;
        return;
    }
    const Json attached = call("Target.attachToTarget", {{"targetId", target["targetId"]}, {"flatten", true}});
    mSession = attached.value("sessionId", "");
    for (const char* const domain : {"Runtime", "Log", "Page", "Network"}) call(domain + std::string(".enable"));
    call("Emulation.setFocusEmulationEnabled", {{"enabled", true}});
    call("Emulation.setDeviceMetricsOverride",
         {{"width", kWidth}, {"height", kHeight}, {"deviceScaleFactor", 1}, {"mobile", false}});
}

Browser::~Browser()
{
    if (mId > 0) {
        kill(-mId, SIGKILL);
        waitpid(mId, nullptr, 0);
    }
    for (const int descriptor : {mToBrowser, mFromBrowser}) {
        if (descriptor >= 0) close(descriptor);
    }
}

bool Browser::send(const Json& message)
{
    const std::string text = message.dump() + '\0';
    for (size_t done = 0; done < text.size();) {
        const ssize_t count = write(mToBrowser, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<size_t>(count);
    }
    return true;
}

Browser::Json Browser::receive()
{
    for (;;) {
        const size_t end = mPending.find('\0');
        if (end != std::string::npos) {
            const std::string message = mPending.substr(0, end);
            mPending.erase(0, end + 1);
            return Json::parse(message, nullptr, false);
        }
        pollfd waiting = {mFromBrowser, POLLIN, 0};
        const int ready = poll(&waiting, 1, kPatienceMilliseconds);
        if (ready < 0 && errno == EINTR) continue;
        char piece[65536];
        const ssize_t count = ready > 0 ? read(mFromBrowser, piece, sizeof piece) : 0;
        if (count <= 0) return nullptr;
        mPending.append(piece, static_cast<size_t>(count));
    }
}

void Browser::note(const Json& event)
{
    const std::string method = event.value("method", "");
    mEvents.push_back(method);
    const Json& parameters = event.contains("params") ? event["params"] : Json::object();
    const bool isTrouble =
        method == "Runtime.consoleAPICalled" || method == "Runtime.exceptionThrown" || method == "Log.entryAdded";
    if (isTrouble) mTroubles.push_back(parameters.dump());
    if (method == "Page.javascriptDialogOpening") mTroubles.push_back("dialog: " + parameters.dump());
    if (method == "Network.requestWillBeSent") {
        const std::string address = parameters["request"].value("url", "");
        const bool isHeld = address.compare(0, 5, "data:") == 0 || address == "about:blank";
        if (!isHeld) mRequests.push_back(address.substr(0, address.find('#')));
    }
}

Browser::Json Browser::call(const std::string& method, const Json& parameters)
{
    Json message = {{"id", ++mLastCall}, {"method", method}, {"params", parameters}};
    if (!mSession.empty()) message["sessionId"] = mSession;
    if (!send(message)) return Json::object();
    for (;;) {
        const Json answer = receive();
        if (!answer.is_object()) {
            ADD_FAILURE() << "no answer to " << method;
            return Json::object();
        }
        if (answer.value("id", 0) == mLastCall) {
            if (answer.contains("error")) ADD_FAILURE() << method << ": " << answer["error"];
            return answer.value("result", Json::object());
        }
        note(answer);
    }
}

void Browser::open(const std::string& file, const std::string& fragment)
{
    navigate("about:blank"); // another fragment alone would not load the page again
    navigate("file://" + file + (fragment.empty() ? "" : "#" + fragment));
}

void Browser::navigate(const std::string& address)
{
    mEvents.clear();
    call("Page.navigate", {{"url", address}});
    while (std::count(mEvents.begin(), mEvents.end(), "Page.loadEventFired") == 0) {
        const Json event = receive();
        if (!event.is_object()) {
            ADD_FAILURE() << address << " was not loaded";
            return;
        }
        note(event);
    }
}

void Browser::prefer(const std::string& scheme)
{
    const Json feature = {{"name", "prefers-color-scheme"}, {"value", scheme}};
    call("Emulation.setEmulatedMedia", {{"features", Json::array({feature})}});
}

Browser::Json Browser::evaluate(const std::string& expression)
{
    const Json answer = call("Runtime.evaluate", {{"expression", expression}, {"returnByValue", true}});
    if (answer.contains("exceptionDetails")) ADD_FAILURE() << expression << ": " << answer["exceptionDetails"];
    return answer.contains("result") ? answer["result"].value("value", Json()) : Json();
}

std::string Browser::text(const std::string& expression)
{
    const Json value = evaluate(expression);
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void Browser::press(const std::string& key, bool withShift)
{
    const bool isCharacter = key.size() == 1;
    Json event = {{"type", "keyDown"}, {"key", key}, {"modifiers", withShift ? 8 : 0}};
    if (isCharacter) {
        event["text"] = key;
    } else {
        event["code"] = key;
        event["windowsVirtualKeyCode"] = keyCode(key);
        if (key == "Enter") event["text"] = "\r";
    }
    call("Input.dispatchKeyEvent", event);
    event["type"] = "keyUp";
    event.erase("text");
    call("Input.dispatchKeyEvent", event);
}

void Browser::type(const std::string& text)
{
    for (const char c : text) press(std::string(1, c));
}

void Browser::mouse(const std::string& type, int x, int y, int buttons)
{
    call("Input.dispatchMouseEvent", {{"type", type},
                                      {"x", x},
                                      {"y", y},
                                      {"button", type == "mouseMoved" && buttons == 0 ? "none" : "left"},
                                      {"buttons", buttons},
                                      {"clickCount", 1}});
}

void Browser::click(const std::string& selector)
{
    const Json place = evaluate("(() => { const box = document.querySelector(" + Json(selector).dump() +
                                ").getBoundingClientRect();"
                                "return [Math.round(box.x + box.width / 2), Math.round(box.y + box.height / 2)]; })()");
    if (!place.is_array()) return; // the failure was noted
    mouse("mouseMoved", place[0], place[1], 0);
    mouse("mousePressed", place[0], place[1], 1);
    mouse("mouseReleased", place[0], place[1], 0);
}

void Browser::drag(int fromX, int fromY, int toX, int toY)
{
    mouse("mouseMoved", fromX, fromY, 0);
    mouse("mousePressed", fromX, fromY, 1);
    mouse("mouseMoved", (fromX + toX) / 2, (fromY + toY) / 2, 1);
    mouse("mouseMoved", toX, toY, 1);
    mouse("mouseReleased", toX, toY, 0);
}

void Browser::turnWheel(int x, int y, int delta)
{
    call("Input.dispatchMouseEvent", {{"type", "mouseWheel"}, {"x", x}, {"y", y}, {"deltaX", 0}, {"deltaY", delta}});
}

void Browser::saveScreenshot(const std::string& file)
{
    const Json answer = call("Page.captureScreenshot", {{"format", "png"}});
    std::ofstream(file, std::ios::binary) << decodedBase64(answer.value("data", ""));
}
