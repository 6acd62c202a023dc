// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CHECK_FAULT_H
#define NUXO_TESTS_CHECK_FAULT_H

#include <nlohmann/json.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// A fault that a writer of graph files may make: edits of good files. Where `nuxo check` is to point stands in the edited
/// text as '^', so that no test states lines and columns.
///
/// As JSON: an object with
///   "name"       what the fault is
///   "rule"       the rule that finds it (in a rule's own file it goes without saying)
///   "file"       "descriptor.xml", "settings.xml" (the small files in fixtures/) or "kva6_settings.xml" and so on (the
///                examples); the other file of the pair goes along
///   "find"       a text of the file. It stands there once, or "after" is given
///   "after"      a text that stands once; the first "find" behind it is taken
///   "replace"    what takes its place, with '^' where a finding is expected
///   "edits"      instead of the four: several edits, objects with the four
///   "says"       parts of the finding's text or of its notes
///   "severity"   of the finding, "error" when left out
///   "also"       rules that find something else in the edited files
///   "arguments"  options of the run
struct Fault {
    explicit Fault(const nlohmann::json& description, const std::string& defaultRule = "");

    struct Place {
        std::string file;
        size_t line = 0;
        size_t column = 0;
    };

    std::string name;
    std::string rule;
    std::string severity;
    std::vector<std::string> says;
    std::vector<std::string> also;
    std::vector<std::string> arguments;
    std::string descriptor; ///< names of the files
    std::string settings;
    std::map<std::string, std::string> texts; ///< of both files, edited
    std::vector<Place> places;                ///< one for each '^'
    std::string trouble;                      ///< why the description cannot be used, "" when it can

private:
    void edit(const nlohmann::json& description);
    bool replace(std::string& text, const nlohmann::json& description);
};

/// The faults of a file of tests/check.
nlohmann::json readJson(const std::string& path);

/// Names of the JSON files of a folder of tests/check, without suffix, in alphabetical order.
std::vector<std::string> jsonFilesIn(const std::string& folder);

#endif
