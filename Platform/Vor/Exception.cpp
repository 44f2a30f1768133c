#include "Vor/Exception.h"

#include "Vor/LogOutput.h"
#include "Vor/Logging.h"

#include <array>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <typeinfo>
#include <utility>

namespace Vor {

struct Exception::State {
    int line = 0;
    std::string path;
    yStatus status = yERROR;
    std::string function;
    bool hasText = false;
    std::string text;
    std::array<void*, 32> calls{};
    int callCount = 0;
};

namespace {

std::string Demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                           &std::free);
    return status == 0 && text ? text.get() : name;
}

std::string CallText(void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return Format("%p", address);
    }
    if (info.dli_sname == nullptr) {
        const auto offset = static_cast<const char*>(address) - static_cast<const char*>(info.dli_fbase);
        return Format("%s+0x%zx", info.dli_fname, static_cast<std::size_t>(offset));
    }
    return Format("%s (%s)", Demangled(info.dli_sname), info.dli_fname);
}

/// Calls `visit` for the exception and each one nested in it, with null for what isn't a std::exception.
template <typename Visitor>
void WalkChain(const std::exception& e, Visitor visit) {
    visit(&e);
    const auto* nested = dynamic_cast<const std::nested_exception*>(&e);
    if (nested == nullptr || nested->nested_ptr() == nullptr) {
        return;
    }
    try {
        nested->rethrow_nested();
    } catch (const std::exception& inner) {
        WalkChain(inner, visit);
    } catch (...) {
        visit(nullptr);
    }
}

void LogOne(const std::exception* e, const char* how) {
    if (e == nullptr) {
        Vor_Log(__LINE__, __FILE__, LevelError, "Exception", "%s exception of another type", how);
    } else if (const auto* ours = dynamic_cast<const Exception*>(e)) {
        Vor_Log(ours->Line(), ours->Path(), LevelError, ours->Function(), "%s exception with status %d: %s", how,
                ours->Status(), ours->HasText() ? ours->what() : "(no text)");
    } else {
        Vor_Log(__LINE__, __FILE__, LevelError, "Exception", "%s %s: %s", how, Demangled(typeid(*e).name()), e->what());
    }
}

} // namespace

Exception::Exception(int line, const char* path, yStatus status, const char* function)
    : state(std::make_shared<State>()) {
    state->line = line;
    state->path = path == nullptr ? "" : path;
    state->status = status;
    state->function = function == nullptr ? "" : function;
    state->callCount = backtrace(state->calls.data(), static_cast<int>(state->calls.size()));
}

Exception::Exception(int line, const char* path, yStatus status, const char* function, Text text)
    : Exception(line, path, status, function) {
    state->hasText = true;
    state->text = std::move(text.value);
}

yStatus Exception::Status() const {
    return state->status;
}

yStatus Exception::StatusOf(const std::exception& e) {
    const auto* const ours = dynamic_cast<const Exception*>(&e);
    return ours != nullptr ? ours->Status() : yERROR;
}

const char* Exception::what() const noexcept {
    return state->text.c_str();
}

bool Exception::HasText() const {
    return state->hasText;
}

int Exception::Line() const {
    return state->line;
}

const char* Exception::Path() const {
    return state->path.c_str();
}

const char* Exception::Function() const {
    return state->function.c_str();
}

void Exception::LogException(const std::exception& e) {
    try {
        const char* how = "Caught";
        WalkChain(e, [&how](const std::exception* one) {
            LogOne(one, how);
            how = "Caused by";
        });
    } catch (...) { // NOLINT(bugprone-empty-catch): a log that fails mustn't hide the failure that is logged
    }
}

void Exception::LogBackTrace(const std::exception& e) {
    try {
        WalkChain(e, [](const std::exception* one) {
            const auto* ours = dynamic_cast<const Exception*>(one);
            if (ours == nullptr) {
                return;
            }
            std::string text;
            for (int i = 0; i < ours->state->callCount; ++i) {
                text += Format("\n  #%d %s", i, CallText(ours->state->calls[static_cast<std::size_t>(i)]));
            }
            Vor_Log(ours->Line(), ours->Path(), LevelError, ours->Function(), LogOutput::BackTraceFormat,
                    ours->Status(), text);
        });
    } catch (...) { // NOLINT(bugprone-empty-catch): a log that fails mustn't hide the failure that is logged
    }
}

} // namespace Vor
