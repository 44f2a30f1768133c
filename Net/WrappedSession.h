#pragma once

#include "Net/ITcpSession.h"

#include <memory>
#include <string>
#include <utility>

namespace Net {

/// A session around another one. It passes everything on; the derived class overrides what concerns the bytes, such as
/// an encryption between socket and protocol.
class WrappedSession : public ITcpSession {
public:
    explicit WrappedSession(std::unique_ptr<ITcpSession> inner)
        : inner(std::move(inner)) {}

    void SetPeer(const NetworkAddress& address) override { inner->SetPeer(address); }
    void SetMayWrite(bool value) override { inner->SetMayWrite(value); }
    std::span<unsigned char> ReceiveSpace() override { return inner->ReceiveSpace(); }
    void Received(std::size_t count) override { inner->Received(count); }
    void InputEnded() override { inner->InputEnded(); }
    std::size_t Process() override { return inner->Process(); }
    bool WantsWakeup() const override { return inner->WantsWakeup(); }
    std::span<const unsigned char> Replies() const override { return inner->Replies(); }
    void Sent(std::size_t count) override { inner->Sent(count); }
    void Drained() override { inner->Drained(); }
    bool Broken() const override { return inner->Broken(); }
    bool IsAborted() const override { return inner->IsAborted(); }
    std::string EndReason() const override { return inner->EndReason(); }
    bool HasFinished() const override { return inner->HasFinished(); }
    bool IsWorking() const override { return inner->IsWorking(); }
    bool IsSubscribed() const override { return inner->IsSubscribed(); }
    bool ReadsAhead() const override { return inner->ReadsAhead(); }
    std::optional<Clock::time_point> Deadline() const override { return inner->Deadline(); }
    bool Expire() override { return inner->Expire(); }

protected:
    ITcpSession& Inner() { return *inner; }
    const ITcpSession& Inner() const { return *inner; }

private:
    const std::unique_ptr<ITcpSession> inner;
};

} // namespace Net
