// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_END_TO_END_BROWSER_H
#define NUXO_TESTS_END_TO_END_BROWSER_H

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include <sys/types.h>

/// A headless Chromium with one page, steered by its debugging protocol over a pair of pipes. Failures of the browser
/// itself are failures of the test.
class Browser {
public:
    using Json = nlohmann::json;

    /// @param directory  where the browser may keep its files
    explicit Browser(const std::string& directory);
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    /// Whether the browser runs.
    bool isRunning() const { return mId > 0; }
    /// Opens a file, with what stands behind '#', and waits until it is loaded.
    void open(const std::string& file, const std::string& fragment = "");
    /// "light" or "dark", as the user would prefer.
    void prefer(const std::string& scheme);
    /// The value of an expression of JavaScript in the page; exceptions are failures.
    Json evaluate(const std::string& expression);
    /// The same as text.
    std::string text(const std::string& expression);

    /// A key as its event names it: "Enter", "Tab", "+". A single character also types it.
    void press(const std::string& key, bool withShift = false);
    void type(const std::string& text);
    /// A click into the middle of the element that a selector names.
    void click(const std::string& selector);
    void drag(int fromX, int fromY, int toX, int toY);
    void turnWheel(int x, int y, int delta);
    /// Writes a picture of the page.
    void saveScreenshot(const std::string& file);

    /// What the console said, exceptions, and what the page's policy refused.
    const std::vector<std::string>& troubles() const { return mTroubles; }
    /// Addresses that the page asked for, without what it holds itself.
    const std::vector<std::string>& requests() const { return mRequests; }

private:
    Json call(const std::string& method, const Json& parameters = Json::object());
    void navigate(const std::string& address);
    bool send(const Json& message);
    /// The next message; null when there is none in time.
    Json receive();
    void note(const Json& event);
    void mouse(const std::string& type, int x, int y, int buttons);

    pid_t mId = -1;
    int mToBrowser = -1;
    int mFromBrowser = -1;
    int mLastCall = 0;
    std::string mSession;
    std::string mPending; ///< bytes of messages that are not complete
    std::vector<std::string> mEvents;
    std::vector<std::string> mTroubles;
    std::vector<std::string> mRequests;
};

#endif
