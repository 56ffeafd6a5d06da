// The one reader style of all text formats: lines with leading white space removed and blank lines
// skipped, tokens split at delimiters, the rest of a line handed out as it stands. Works on a text
// in memory, so that tests and fuzzers need no disk; a line may have any length and the text may
// end anywhere. A carriage return before the newline is dropped, a NUL counts as a blank.
#pragma once

#include <string>
#include <string_view>

#include "base/memory.h"

namespace photrak {

inline constexpr std::string_view wordDelimiters = " :\t\n";
inline constexpr std::string_view textDelimiters = "\"\n";

class LineReader {
  public:
    /// `text` must outlive the reader; `name` (the file's) is for messages.
    LineReader(std::string_view text, std::string name);
    /// Uses the text up: lines that were read are gone (see SpentText).
    LineReader(std::string_view text, std::string name, SpentText spent);

    /// Moves to the next line that is not blank; false at the end of the text.
    bool Next();
    /// Moves to the next line, blank or not (leading white space removed all the same).
    bool NextEvenIfBlank();

    /// The present line: leading white space and line end removed, trailing blanks kept.
    std::string_view Line() const { return line_; }
    /// Its number in the file, from 1; 0 before the first.
    int LineNumber() const { return number_; }
    const std::string& Name() const { return name_; }
    /// "NAME:LINE", for messages.
    std::string Where() const;

    /// The next token: leading delimiters are skipped, the one delimiter after it is used up.
    /// Empty when the line has no more tokens.
    std::string_view Word(std::string_view delimiters = wordDelimiters);
    /// A text value: runs from here to the next double quote or the end of the line, a leading
    /// double quote skipped.
    std::string_view Text() { return Word(textDelimiters); }
    /// All that is left of the line after the delimiter that ended the last token, blanks
    /// included.
    std::string_view Rest();
    /// Bytes of text after the present line: a bound for what counts in a file may ask for.
    std::size_t BytesLeft() const { return text_.size() - next_; }
    /// Starts the present line again from its first token.
    void Rewind() { position_ = 0; }
    /// Lines before the present one will not be looked at again.
    void ForgetRead();

  private:
    std::string_view text_, line_;
    std::string name_;
    std::size_t next_ = 0;
    std::size_t position_ = 0;
    int number_ = 0;
    SpentText spent_;
};

}  // namespace photrak
