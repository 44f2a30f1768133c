#pragma once

#include <atomic>
#include <list>
#include <map>
#include <memory>

namespace VorControl::ControlProtocol {

class ProtocolRegisterBlock;

/// Saves the walk from the front of an assembly's list to the place of a new block. The list can be searched while
/// each of its blocks has a register, ends without wrapping at 16 bits, and begins behind the end of the one before
/// it. Otherwise every walk begins at the front.
///
/// No lock of its own: that of the assembly guards it.
class RegisterBlockIndex {
public:
    using Blocks = std::list<std::shared_ptr<ProtocolRegisterBlock>>;

    explicit RegisterBlockIndex(Blocks& blocks);

    /// The first block that overlaps the range or lies behind it, or the end of the list, in logarithmic time; the
    /// front of the list while it can't be searched. No block before it has to do with the range.
    Blocks::iterator WalkStart(unsigned short start, unsigned short end);

    /// The first block with this output id, or the end of the list; in logarithmic time while the list can be searched.
    Blocks::iterator Find(unsigned short outputId);

    /// For a block before it goes into the list: notices each later change of where it lies.
    void Watch(ProtocolRegisterBlock& block);
    /// For a block that is watched and has gone into the list.
    void Added(Blocks::iterator position);
    /// For a block that is about to leave the list.
    void Removing(Blocks::iterator position);
    /// The list has been emptied.
    void Cleared();

private:
    bool IsSearchable();
    void Rebuild();
    bool Fits(Blocks::iterator position) const;

    Blocks& blocks;
    /// Set by the blocks that are watched; those that have left the list have an old one. Atomic, since they have
    /// left the lock as well.
    std::shared_ptr<std::atomic<bool>> changed;
    bool stale = false; ///< what follows is out of date
    bool fits = true;
    std::map<unsigned short, Blocks::iterator> byOutputId;
};

} // namespace VorControl::ControlProtocol
