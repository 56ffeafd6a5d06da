// Fields follow each other as "KEY LENGTH\n", so many bytes, "\n": any text can stand in one. Words
// within a field are parted by bytes of 0. The field "end" says that the file is whole.
#include "results/point_file.h"

#include <charconv>
#include <cstdio>

#include "base/text.h"

namespace photrak {
namespace {

constexpr std::string_view formWord = "photrak-point 1";

void AppendField(std::string& text, std::string_view key, std::string_view value) {
    text += Concat(key, ' ', value.size(), '\n');
    text += value;
    text += '\n';
}

/// The shortest decimals that read back equal.
std::string Exact(double value) {
    char buffer[32];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return error == std::errc() ? std::string(buffer, end) : std::string("nan");
}

std::string Joined(std::initializer_list<std::string_view> words) {
    std::string text;
    for (const std::string_view word : words) {
        text += word;
        text += '\0';
    }
    return text;
}

/// Words off the front of a field.
class Words {
  public:
    explicit Words(std::string_view text) : rest_(text) {}
    std::string Text() {
        const std::size_t end = rest_.find('\0');
        if (end == std::string_view::npos) {
            sound_ = false;
            return {};
        }
        std::string word(rest_.substr(0, end));
        rest_.remove_prefix(end + 1);
        return word;
    }
    double Number() {
        const std::string word = Text();
        double value = 0.0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        sound_ = sound_ && error == std::errc() && end == word.data() + word.size();
        return value;
    }
    std::int64_t Whole() {
        const std::string word = Text();
        std::int64_t value = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
        sound_ = sound_ && error == std::errc() && end == word.data() + word.size();
        return value;
    }
    bool Flag() {
        const std::int64_t value = Whole();
        sound_ = sound_ && (value == 0 || value == 1);
        return value == 1;
    }
    Status StatusCode() {
        const std::int64_t value = Whole();
        sound_ = sound_ && value >= 0 && value <= 2;
        return sound_ ? static_cast<Status>(value) : Status::Error;
    }
    std::string_view Rest() const { return rest_; }
    bool IsSound() const { return sound_; }

  private:
    std::string_view rest_;
    bool sound_ = true;
};

std::string Digits(Status status) {
    return Concat(static_cast<int>(status));
}
std::string Digits(bool flag) {
    return flag ? "1" : "0";
}

std::string ReadingText(const BerReading& reading) {
    return Joined({reading.component, Exact(reading.BER), Exact(reading.Q), Exact(reading.level),
                   Exact(reading.offset), Concat(reading.loop), Digits(reading.found),
                   Digits(reading.status), Concat(reading.after)});
}

bool TakeReading(Words& words, PointFile& file) {
    BerReading reading;
    reading.component = words.Text();
    reading.BER = words.Number();
    reading.Q = words.Number();
    reading.level = words.Number();
    reading.offset = words.Number();
    reading.loop = static_cast<std::int32_t>(words.Whole());
    reading.found = words.Flag();
    reading.status = words.StatusCode();
    reading.after = static_cast<std::size_t>(words.Whole());
    file.readings.push_back(std::move(reading));
    return words.IsSound();
}

bool TakeHead(Words& words, PointFile& file) {
    file.hash = words.Text();
    file.point = words.Whole();
    file.seconds = words.Number();
    file.drewNoise = words.Flag();
    file.outcome.status = words.StatusCode();
    file.outcome.blocks = words.StatusCode();
    return words.IsSound();
}

bool TakeError(Words& words, PointFile& file) {
    file.outcome.errorText = words.Rest();
    return true;
}

bool TakeLog(Words& words, PointFile& file) {
    file.log = words.Rest();
    return true;
}

bool TakeWarning(Words& words, PointFile& file) {
    std::string component = words.Text();
    file.warnings.push_back({std::move(component), std::string(words.Rest()), {}});
    return words.IsSound();
}

bool TakeClamp(Words& words, PointFile& file) {
    if (file.warnings.empty()) return false;
    ClampNote note{words.Text(), words.Text(), words.Text(), words.Text(), words.Text(), false};
    note.isBelow = words.Flag();
    file.warnings.back().clamps.push_back(std::move(note));
    return words.IsSound();
}

bool TakeFile(Words& words, PointFile& file) {
    PointFile::Written written;
    written.name = words.Text();
    written.appends = words.Flag();
    written.text = words.Rest();
    file.files.push_back(std::move(written));
    return words.IsSound();
}

struct Field {
    std::string_view key;
    bool (*take)(Words& words, PointFile& file);
};
constexpr Field fields[] = {{"point", TakeHead},     {"error", TakeError},     {"log", TakeLog},
                            {"file", TakeFile},      {"warning", TakeWarning}, {"clamp", TakeClamp},
                            {"reading", TakeReading}};

/// Key and value off the front; false for what is no field.
bool TakeField(std::string_view& text, std::string_view& key, std::string_view& value) {
    const std::size_t line = text.find('\n');
    const std::size_t blank = text.substr(0, line).find(' ');
    if (line == std::string_view::npos || blank == std::string_view::npos) return false;
    std::size_t length = 0;
    const auto [end, error] = std::from_chars(text.data() + blank + 1, text.data() + line, length);
    if (error != std::errc() || end != text.data() + line) return false;
    if (length >= text.size() - line - 1 || text[line + 1 + length] != '\n') return false;
    key = text.substr(0, blank);
    value = text.substr(line + 1, length);
    text.remove_prefix(line + length + 2);
    return true;
}

}  // namespace

std::string PointFileName(std::int64_t point) {
    char name[40];
    std::snprintf(name, sizeof name, "%07lld.point", static_cast<long long>(point));
    return name;
}

std::string PointFileText(const PointFile& file) {
    std::string text;
    AppendField(text, "form", formWord);
    AppendField(text, "point",
                Joined({file.hash, Concat(file.point), Exact(file.seconds), Digits(file.drewNoise),
                        Digits(file.outcome.status), Digits(file.outcome.blocks)}));
    AppendField(text, "error", file.outcome.errorText);
    AppendField(text, "log", file.log);
    for (const PointFile::Warning& warning : file.warnings) {
        AppendField(text, "warning", Joined({warning.component}) + warning.text);
        for (const ClampNote& note : warning.clamps) {
            AppendField(text, "clamp",
                        Joined({note.told, note.parameter, note.value, note.limit, note.unit,
                                Digits(note.isBelow)}));
        }
    }
    for (const PointFile::Written& written : file.files) {
        AppendField(text, "file", Joined({written.name, Digits(written.appends)}) + written.text);
    }
    for (const BerReading& reading : file.readings) {
        AppendField(text, "reading", ReadingText(reading));
    }
    AppendField(text, "end", "");
    return text;
}

bool ReadPointFile(std::string_view text, PointFile& file, std::string& reason) {
    file = {};
    std::string_view key, value;
    if (!TakeField(text, key, value) || key != "form" || value != formWord) {
        reason = "not the outcome of a point";
        return false;
    }
    while (TakeField(text, key, value)) {
        if (key == "end") return true;
        for (const Field& field : fields) {
            if (field.key != key) continue;
            Words words(value);
            if (field.take(words, file)) break;
            reason = Concat("a damaged field '", key, "'");
            return false;
        }
    }
    reason = "cut off before its end";
    return false;
}

}  // namespace photrak
