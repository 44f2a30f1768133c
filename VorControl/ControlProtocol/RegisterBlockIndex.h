#pragma once

#include "VorControl/ControlProtocol/RegisterSums.h"

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace VorControl::ControlProtocol {

class ProtocolRegisterBlock;

/// Saves the walks over an assembly's list: to the place of a block, to a block of a known output id, and for the sum
/// of the registers. The list can be searched while each of its blocks has a register, ends without wrapping at 16
/// bits, and begins behind the end of the one before it. Otherwise the list is walked.
///
/// No lock of its own: that of the assembly guards it.
class RegisterBlockIndex {
public:
    using Blocks = std::list<std::shared_ptr<ProtocolRegisterBlock>>;

    explicit RegisterBlockIndex(Blocks& blocks);

    /// The first block that overlaps the range or lies behind it, or the end of the list, in logarithmic time; the
    /// front of the list while it can't be searched. No block before it has to do with the range.
    Blocks::iterator WalkStart(unsigned short start, unsigned short end);
    /// The first block with this output id, or the end of the list; in logarithmic time while it can be searched.
    Blocks::iterator Find(unsigned short outputId);
    /// Registers of all blocks from the given one on, in 16 bits; in logarithmic time when asked again while the list
    /// can be searched.
    unsigned short RegistersFrom(Blocks::const_iterator from);

    /// For a block before it goes into the list: notices each later change of where it lies.
    void Watch(ProtocolRegisterBlock& block);
    /// For a block that is watched and has gone into the list.
    void Added(Blocks::iterator position);
    /// For a block that is about to leave the list.
    void Removing(Blocks::iterator position);
    /// Calls what changes where a block lies, and follows; of the blocks in the list, each may change once before the
    /// list is searched again.
    template <class Call>
    void Change(Blocks::iterator position, const Call& change) {
        const bool follows = Forget(position);
        change();
        if (follows) {
            Follow();
        }
    }
    /// The list has been emptied.
    void Cleared();

private:
    bool IsUpToDate() const;
    bool IsSearchable();
    void Invalidate();
    void Rebuild();
    void Settle();
    bool Forget(Blocks::iterator position);
    void Follow();
    void Erase(Blocks::iterator position);
    bool Fits(Blocks::iterator position) const;

    Blocks& blocks;
    /// Set by the blocks that are watched; those that have left the list have an old one. Atomic, since they have
    /// left the lock as well.
    std::shared_ptr<std::atomic<bool>> changed;
    bool stale = false; ///< what follows is out of date
    bool fits = true;
    std::map<unsigned short, Blocks::iterator> byOutputId;
    /// In the list, but not yet in what it is searched by.
    std::vector<Blocks::iterator> unsettled;
    bool sumAsked = false;
    std::optional<RegisterSums> sums;
};

} // namespace VorControl::ControlProtocol
