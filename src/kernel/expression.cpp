// A recursive descent evaluator. Its whole state is one object on the stack, so that an evaluation
// may start inside another or be left by an escape. A failure sets the error word and turns the
// present token into the end of the text, at which every rule of the grammar returns.
#include "kernel/expression.h"

#include <algorithm>
#include <cmath>

#include "kernel/expression_functions.h"
#include "kernel/expression_tokens.h"

namespace photrak {

namespace {

constexpr int maxSymbolDepth = 199;  // symbols whose texts name symbols
constexpr int maxNesting = 2000;     // open atoms, through all symbols: bounds the C++ stack
// Tokens, through all symbols: bounds the time. The free ones are far more than a sensible
// expression has; the others count against the table, so that many exploding expressions cost
// little more than a few.
constexpr std::int64_t maxSteps = 1'000'000, freeSteps = 1'000;

/// A token with its meaning.
struct Lexeme {
    enum class Kind { End, Mark, Number, Function };
    Kind kind = Kind::End;
    char mark = 0;
    double number = 0.0;
    const ExprFunction* function = nullptr;
};

class Evaluator {
  public:
    explicit Evaluator(const SymbolTable& table)
        : table_(table), stepsAllowed_(std::min(maxSteps, freeSteps + table.stepsLeft)) {}

    double Run(std::string_view text, ExprError& error) {
        const double value = Text(text);
        error = error_;
        table_.stepsLeft -= std::clamp<std::int64_t>(steps_ - freeSteps, 0, table_.stepsLeft);
        return error_ == ExprError::None ? value : 0.0;
    }

  private:
    double Text(std::string_view text);
    Lexeme Resolve(std::string_view word);
    Lexeme ResolveSymbol(const Symbol& symbol);
    void Advance();
    double Expression();
    double Term();
    double Power();
    double Atom();
    double AtomInside();
    double Call(const ExprFunction& function);
    double CallWithList(const ExprFunction& function);

    bool Failed() const { return error_ != ExprError::None; }
    bool At(char mark) const { return token_.kind == Lexeme::Kind::Mark && token_.mark == mark; }
    /// The first failure stands.
    double Fail(ExprError error) {
        if (!Failed()) error_ = error;
        token_ = {};
        return 0.0;
    }
    void Expect(char mark) {
        if (!At(mark)) {
            Fail(ExprError::Parenthesis);
            return;
        }
        Advance();
    }

    const SymbolTable& table_;
    TokenReader reader_;
    Lexeme token_;
    ExprError error_ = ExprError::None;
    int depth_ = 0, nesting_ = 0;
    const std::int64_t stepsAllowed_;
    std::int64_t steps_ = 0;
};

/// A whole text, the first or that of a symbol; what was being read goes on afterwards.
double Evaluator::Text(std::string_view text) {
    const TokenReader outerReader = reader_;
    const Lexeme outerToken = token_;
    reader_ = TokenReader(text);
    Advance();
    const double value = Expression();
    if (token_.kind != Lexeme::Kind::End) Fail(ExprError::Syntax);
    reader_ = outerReader;
    if (!Failed()) token_ = outerToken;
    return value;
}

void Evaluator::Advance() {
    if (Failed()) return;
    if (++steps_ > stepsAllowed_) {
        Fail(ExprError::TooDeep);
        return;
    }
    const Token token = reader_.Next();
    Lexeme next;
    if (token.kind == Token::Kind::Mark) next = {.kind = Lexeme::Kind::Mark, .mark = token.mark};
    if (token.kind == Token::Kind::Word) next = Resolve(token.word);
    if (!Failed()) token_ = next;
}

/// A number, else a predefined name, else a symbol, else a function.
Lexeme Evaluator::Resolve(std::string_view word) {
    Lexeme lexeme{.kind = Lexeme::Kind::Number};
    if (IsNumber(word, &lexeme.number)) return lexeme;
    word = StripNumberText(word);
    // By design: a predefined name hides a symbol, so that c is always the speed of light.
    if (const Symbol* predefined = FindSymbol(PredefinedSymbols(), word)) {
        lexeme.number = predefined->value;
        return lexeme;
    }
    if (const Symbol* symbol = FindSymbol(table_, word)) return ResolveSymbol(*symbol);
    if (const Symbol* function = FindSymbol(FunctionSymbols(), word)) {
        const auto number = static_cast<std::size_t>(function->value);
        return {.kind = Lexeme::Kind::Function, .function = &ExprFunctions()[number - 1]};
    }
    Fail(ExprError::Syntax);
    return {};
}

Lexeme Evaluator::ResolveSymbol(const Symbol& symbol) {
    Lexeme lexeme{.kind = Lexeme::Kind::Number};
    if (depth_ > maxSymbolDepth) {
        Fail(ExprError::TooDeep);
    } else if (symbol.text[0] == '\0') {
        lexeme.number = symbol.value;
    } else {
        ++depth_;
        lexeme.number = Text(symbol.text);
        --depth_;
    }
    return lexeme;
}

double Evaluator::Expression() {
    double value = Term();
    while (At('+') || At('-')) {
        const bool plus = At('+');
        Advance();
        const double next = Term();
        value = plus ? value + next : value - next;
    }
    return value;
}

double Evaluator::Term() {
    double value = Power();
    while (At('*') || At('/')) {
        const bool times = At('*');
        Advance();
        const double next = Power();
        if (!times && next == 0.0) return Fail(ExprError::DivisionByZero);
        value = times ? value * next : value / next;
    }
    return value;
}

/// By design: the power associates from the left, so that 2^3^2 is 64.
double Evaluator::Power() {
    double value = Atom();
    while (At('^')) {
        Advance();
        value = std::pow(value, Atom());
    }
    return value;
}

double Evaluator::Atom() {
    if (nesting_ >= maxNesting) return Fail(ExprError::TooDeep);
    ++nesting_;
    const double value = AtomInside();
    --nesting_;
    return value;
}

double Evaluator::AtomInside() {
    if (token_.kind == Lexeme::Kind::Number) {
        const double value = token_.number;
        Advance();
        return value;
    }
    if (token_.kind == Lexeme::Kind::Function) {
        const ExprFunction& function = *token_.function;
        Advance();
        return Call(function);
    }
    if (At('(')) {
        Advance();
        const double value = Expression();
        Expect(')');
        return value;
    }
    if (At('-')) {
        Advance();
        // By design: the minus takes a whole term, so that -2^2 is -4 and 2^-1*3 is 2^-3.
        return -Term();
    }
    return Fail(ExprError::Syntax);
}

double Evaluator::Call(const ExprFunction& function) {
    if (!At('(')) return Fail(ExprError::Parenthesis);
    if (function.ofOne) {
        const double argument = Atom();
        return function.ofOne(argument);
    }
    Advance();
    if (function.ofList) return CallWithList(function);
    const double first = Expression();
    Expect(',');
    const double second = Expression();
    Expect(')');
    return function.ofTwo(first, second);
}

/// The arguments of a list function up to its closing parenthesis; commas between them may be left
/// out.
double Evaluator::CallWithList(const ExprFunction& function) {
    double arguments[maxExprArguments];
    std::size_t count = 0;
    while (!At(')') && !Failed()) {
        if (count == maxExprArguments) return Fail(ExprError::Parenthesis);
        arguments[count++] = Expression();
        if (At(',')) Advance();
    }
    Expect(')');
    if (Failed()) return 0.0;
    double value = 0.0;
    if (!function.ofList({arguments, count}, value)) return Fail(ExprError::Parenthesis);
    return value;
}

}  // namespace

double ExprEval(const SymbolTable& table, std::string_view text, ExprError& error) {
    return Evaluator(table).Run(text, error);
}

double EvalNumberText(const SymbolTable& table, std::string_view text, ExprError& error) {
    text = StripNumberText(text);
    double value = 0.0;
    error = ExprError::None;
    return IsNumber(text, &value) ? value : ExprEval(table, text, error);
}

bool CanNameASymbol(std::string_view name) {
    const Token token = TokenReader(name).Next();
    return token.kind == Token::Kind::Word && token.word == name && StripNumberText(name) == name &&
           !IsNumber(name) && !FindSymbol(PredefinedSymbols(), name);
}

}  // namespace photrak
