#pragma once

#include "Vor/AsyncRunner.h"
#include "Vor/Exception.h"
#include "VorApi/Completion.h"
#include "VorCommon/PersistManager.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace Sensor::Resources {

/// Runs the work of requests with files on the persistence thread. Main loop only.
class FileTasks {
public:
    /// The manager outlives this.
    explicit FileTasks(VorCommon::PersistManager& persistence)
        : persistence(persistence) {}
    FileTasks(const FileTasks&) = delete;
    FileTasks& operator=(const FileTasks&) = delete;

    /// Runs `work` on the persistence thread, also when this is destroyed before, so it must own all it touches. The
    /// answer is what `documentOf` makes of its result on the main loop, as long as this lives, or what it has thrown.
    template <class Work, class DocumentOf>
    void Run(const VorApi::Completion& completion, Work work, DocumentOf documentOf) {
        using Result = std::invoke_result_t<Work>;
        persistence.Post([weak = std::weak_ptr(mainLoop), token = std::weak_ptr(alive), completion,
                          work = std::move(work), documentOf = std::move(documentOf)] {
            const auto outcome = std::make_shared<Outcome<Result>>();
            try {
                outcome->result = work();
            } catch (const std::exception& e) {
                outcome->status = Vor::Exception::StatusOf(e);
                outcome->text = e.what();
            }
            if (const auto runner = weak.lock()) {
                runner->Run([token, completion, documentOf, outcome] {
                    if (!token.expired()) {
                        Answer(completion, documentOf, *outcome);
                    }
                });
            }
        });
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
    const std::shared_ptr<Vor::AsyncRunner> mainLoop = std::make_shared<Vor::AsyncRunner>();
    const std::shared_ptr<const bool> alive = std::make_shared<bool>(true);
};

} // namespace Sensor::Resources
