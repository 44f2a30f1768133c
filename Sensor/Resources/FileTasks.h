#pragma once

#include "Vor/AsyncRunner.h"
#include "Vor/Exception.h"
#include "VorApi/Completion.h"
#include "VorApi/ResponseInfoEx.h"
#include "VorCommon/PersistManager.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace Sensor::Resources {

/// Runs the work of requests with files on the persistence thread. Main loop only.
class FileTasks {
public:
    /// The most tasks that wait or run.
    static constexpr std::size_t MaxWaiting = 8;

    /// The manager outlives this.
    explicit FileTasks(VorCommon::PersistManager& persistence)
        : persistence(persistence) {}
    FileTasks(const FileTasks&) = delete;
    FileTasks& operator=(const FileTasks&) = delete;

    /// Throws yERROR_BUSY when one more can't be run. For a request that does something before.
    void RequireRoom() const {
        if (waiting >= MaxWaiting) {
            Vor::Throw(yERROR_BUSY, "%d requests wait for files of jobs, which is the most that may.",
                       static_cast<int>(MaxWaiting));
        }
    }

    /// Runs `work` on the persistence thread, also when this is destroyed before, so it must own all it touches. The
    /// answer is what `documentOf` makes of its result on the main loop, as long as this lives, or what it has thrown.
    /// `ended` is called before either answer, unless it is empty. Throws what RequireRoom throws.
    template <class Work, class DocumentOf>
    void Run(VorApi::ResponseInfoEx& response, Work work, DocumentOf documentOf,
             std::function<void()> ended = nullptr) {
        using Result = std::invoke_result_t<Work>;
        RequireRoom();
        const VorApi::Completion completion = response.Defer();
        persistence.Post([this, weak = std::weak_ptr(mainLoop), token = std::weak_ptr(alive), completion,
                          work = std::move(work), documentOf = std::move(documentOf), ended = std::move(ended)] {
            const auto outcome = std::make_shared<Outcome<Result>>();
            try {
                outcome->result = work();
            } catch (const std::exception& e) {
                outcome->status = Vor::Exception::StatusOf(e);
                outcome->text = e.what();
            }
            if (const auto runner = weak.lock()) {
                runner->Run([this, token, completion, documentOf, ended, outcome] {
                    if (!token.expired()) {
                        --waiting;
                        if (ended) {
                            ended();
                        }
                        Answer(completion, documentOf, *outcome);
                    }
                });
            }
        });
        ++waiting;
    }

private:
    /// An exception isn't passed from thread to thread, since both would hold it.
    template <class Result>
    struct Outcome {
        std::optional<Result> result;
        yStatus status = yOK; ///< of the failure
        std::string text = std::string();
    };

    template <class DocumentOf, class Result>
    static void Answer(const VorApi::Completion& completion, const DocumentOf& documentOf,
                       const Outcome<Result>& outcome) {
        if (outcome.result) {
            completion.Complete(documentOf(*outcome.result));
        } else {
            completion.Fail(std::make_exception_ptr(
                Vor::Exception(__LINE__, __FILE__, outcome.status, "FileTasks", "%s", outcome.text)));
        }
    }

    VorCommon::PersistManager& persistence;
    std::size_t waiting = 0;
    const std::shared_ptr<Vor::AsyncRunner> mainLoop = std::make_shared<Vor::AsyncRunner>();
    const std::shared_ptr<const bool> alive = std::make_shared<bool>(true);
};

} // namespace Sensor::Resources
