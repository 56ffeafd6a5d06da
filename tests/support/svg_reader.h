// Reads back the pictures that the program writes: elements in order with their attributes, the
// named group that they stand in, and the boxes that texts cover.
#pragma once

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "drawing/display_list.h"

namespace photrak {

struct SvgElement {
    std::string name, text;  // text: only what stands directly inside
    std::string mark;        // data-mark of the innermost group around it
    std::map<std::string, std::string> attributes;

    double Number(const std::string& attribute) const {
        const auto found = attributes.find(attribute);
        return found == attributes.end() ? 0.0 : ReadDouble(found->second);
    }
    std::vector<Point> Points() const {
        std::vector<Point> points;
        const auto list = attributes.find("points");
        for (std::size_t at = 0, used = 0; list != attributes.end() && at < list->second.size();
             at += used + 1) {
            const std::string_view rest = std::string_view(list->second).substr(at);
            const double x = ReadDouble(rest, &used);
            const std::size_t comma = used + 1;
            const double y = ReadDouble(rest.substr(comma), &used);
            points.push_back({x, y});
            used += comma;
        }
        return points;
    }
};

inline std::string XmlDecoded(std::string_view text) {
    static const std::pair<std::string_view, char> codes[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&amp;", '&'}};
    std::string out;
    while (!text.empty()) {
        std::size_t length = 1;
        char c = text[0];
        for (const auto& [code, meaning] : codes) {
            if (text.starts_with(code)) length = code.size(), c = meaning;
        }
        out += c;
        text.remove_prefix(length);
    }
    return out;
}

/// All elements in order. Tags that do not nest are a failure of the test.
inline std::vector<SvgElement> ReadSvg(std::string_view svg) {
    std::vector<SvgElement> elements;
    std::vector<std::string> open, marks = {""};
    for (std::size_t at = svg.find('<'); at != std::string_view::npos; at = svg.find('<', at)) {
        const std::size_t end = svg.find('>', at);
        std::string_view tag = svg.substr(at + 1, end - at - 1);
        at = end + 1;
        if (tag.starts_with('/')) {
            EXPECT_TRUE(!open.empty() && open.back() == tag.substr(1)) << tag;
            open.pop_back();
            marks.pop_back();
            continue;
        }
        const bool closed = tag.ends_with('/');
        SvgElement element;
        element.name = tag.substr(0, tag.find_first_of(" /"));
        for (std::size_t q = tag.find("=\""); q != std::string_view::npos; q = tag.find("=\"")) {
            const std::string key(tag.substr(tag.rfind(' ', q) + 1, q - tag.rfind(' ', q) - 1));
            const std::size_t last = tag.find('"', q + 2);
            element.attributes[key] = XmlDecoded(tag.substr(q + 2, last - q - 2));
            tag.remove_prefix(last + 1);
        }
        const auto mark = element.attributes.find("data-mark");
        element.mark = mark == element.attributes.end() ? marks.back() : mark->second;
        element.text = XmlDecoded(svg.substr(at, svg.find('<', at) - at));
        if (!closed) {
            open.push_back(element.name);
            marks.push_back(element.mark);
        }
        elements.push_back(std::move(element));
    }
    EXPECT_TRUE(open.empty());
    return elements;
}

/// The box of a text element, by the built-in widths.
inline Rect SvgTextBox(const SvgElement& element) {
    const auto has = [&](const char* attribute, std::string_view value) {
        const auto found = element.attributes.find(attribute);
        return found != element.attributes.end() && found->second.starts_with(value);
    };
    TextItem item;
    item.at = {element.Number("x"), element.Number("y")};
    item.text = element.text;
    item.size = element.Number("font-size");
    item.anchor = has("text-anchor", "middle") ? Anchor::Middle
                  : has("text-anchor", "end")  ? Anchor::End
                                               : Anchor::Start;
    item.weight = has("font-weight", "bold") ? Weight::Bold : Weight::Regular;
    item.upright = has("transform", "rotate(-90");
    return TextBox(item, TableMeasure());
}

/// No text leaves the page or lies on another one.
inline void ExpectTextsApart(const std::vector<SvgElement>& svg) {
    const Rect page{0.0, 0.0, svg.at(0).Number("width"), svg.at(0).Number("height")};
    std::vector<std::pair<Rect, std::string>> boxes;
    for (const SvgElement& element : svg) {
        if (element.name != "text") continue;
        const Rect box = SvgTextBox(element);
        EXPECT_TRUE(box.x >= page.x && box.y >= page.y && box.Right() <= page.Right() &&
                    box.Bottom() <= page.Bottom())
            << "'" << element.text << "' leaves the page";
        for (const auto& [other, text] : boxes) {
            EXPECT_FALSE(box.Overlaps(other))
                << "'" << element.text << "' lies on '" << text << "'";
        }
        boxes.emplace_back(box, element.text);
    }
    EXPECT_GE(boxes.size(), 4u);
}

}  // namespace photrak
