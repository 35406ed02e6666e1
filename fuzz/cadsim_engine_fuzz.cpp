// Any macro text must compile (lex, parse, check names) to a module or a compile error with a
// position, never crash or exhaust the stack.
#include "cadsim/engine/checker.h"
#include "cadsim/engine/lexer.h"
#include "cadsim/engine/parser.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromLatin1(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    try {
        const auto module = cadsim::Parser::parse(text);
        if (!module)
            std::abort();
        cadsim::Checker(*module, {}).check();
    } catch (const cadsim::CompileException &e) {
        const cadsim::SourcePos pos = e.error().pos;
        if (pos.line < 1 || e.error().message.isEmpty())
            std::abort(); // every compile error names its line
    }
    return 0;
}
