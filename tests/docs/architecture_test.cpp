// The drawing of modules in docs/architecture.md against the includes of the sources.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Arrows = std::map<std::string, std::set<std::string>>;

const fs::path root = CAMERA_SOURCE_DIR;

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// "a, b   (remark)" to a and b.
std::vector<std::string> namesIn(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream stream(list.substr(0, list.find('(')));
    for (std::string name; std::getline(stream, name, ',');)
        names.push_back(trimmed(name));
    return names;
}

/// Each module with those whose headers it may include, from the drawing's lines "a, b ──► c, d   (remark)".
const Arrows& allowed() {
    static const Arrows all = [] {
        Arrows arrows;
        std::ifstream document(root / "docs/architecture.md");
        const std::string head = "►";
        for (std::string line; std::getline(document, line);) {
            const auto at = line.find(head);
            if (at == std::string::npos || line.starts_with(' '))
                continue;
            const std::string left = line.substr(0, std::min(line.find("─"), at));
            for (const std::string& module : namesIn(left)) {
                for (const std::string& target : namesIn(line.substr(at + head.size())))
                    arrows[module].insert(target);
            }
        }
        return arrows;
    }();
    return all;
}

/// The longest module name that the path begins with; empty for a path in none.
std::string moduleOf(const std::string& path) {
    std::string found;
    for (const auto& [module, targets] : allowed()) {
        if (path.starts_with(module + "/") && module.size() > found.size())
            found = module;
    }
    return found;
}

struct Include {
    std::string from; ///< paths from the root
    std::string to;
};

/// Includes in quotes of every source of the modules.
const std::vector<Include>& includes() {
    static const std::vector<Include> all = [] {
        std::vector<Include> found;
        std::set<std::string> tops;
        for (const auto& [module, targets] : allowed())
            tops.insert(module.substr(0, module.find('/')));
        for (const std::string& top : tops) {
            for (const auto& entry : fs::recursive_directory_iterator(root / top)) {
                const std::string kind = entry.path().extension();
                if (kind != ".cpp" && kind != ".h")
                    continue;
                std::ifstream source(entry.path());
                const std::string opening = "#include \"";
                for (std::string line; std::getline(source, line);) {
                    if (line.starts_with(opening))
                        found.push_back({fs::relative(entry.path(), root),
                                         line.substr(opening.size(), line.rfind('"') - opening.size())});
                }
            }
        }
        return found;
    }();
    return all;
}

/// The nodes of a circle, or nothing.
std::vector<std::string> circleIn(const Arrows& graph) {
    std::set<std::string> done;
    std::vector<std::string> path;
    const auto visit = [&](const auto& self, const std::string& node) -> bool {
        if (const auto at = std::find(path.begin(), path.end(), node); at != path.end()) {
            path.erase(path.begin(), at);
            return true;
        }
        if (!done.insert(node).second)
            return false;
        path.push_back(node);
        if (const auto targets = graph.find(node); targets != graph.end()) {
            for (const std::string& target : targets->second) {
                if (self(self, target))
                    return true;
            }
        }
        path.pop_back();
        return false;
    };
    for (const auto& [node, targets] : graph) {
        if (visit(visit, node))
            return path;
    }
    return {};
}

} // namespace

TEST(Architecture, DrawsEveryModule) {
    EXPECT_GE(allowed().size(), 10U);
    EXPECT_GE(includes().size(), 300U);
    for (const Include& include : includes())
        EXPECT_NE(moduleOf(include.from), "") << include.from << " belongs to no module of the drawing";
}

TEST(Architecture, AllowsEveryInclude) {
    for (const auto& [from, to] : includes()) {
        if (to.starts_with("ui_") || to.find('/') == std::string::npos)
            continue; // made by a tool
        const std::string module = moduleOf(from);
        const std::string target = moduleOf(to);
        EXPECT_TRUE(target == module || allowed().at(module).contains(target))
            << from << " includes " << to << ": " << module << " may not include headers of " << target;
    }
}

TEST(Architecture, HasNoCircleOfModules) {
    EXPECT_EQ(circleIn(allowed()), std::vector<std::string>());
}

TEST(Architecture, HasNoCircleOfHeaders) {
    Arrows headers;
    for (const auto& [from, to] : includes()) {
        if (from.ends_with(".h"))
            headers[from].insert(to);
    }
    EXPECT_EQ(circleIn(headers), std::vector<std::string>());
}

TEST(Architecture, SeesACircle) {
    EXPECT_EQ(circleIn({{"a", {"b"}}, {"b", {"c"}}, {"c", {"b"}}}), (std::vector<std::string>{"b", "c"}));
}
