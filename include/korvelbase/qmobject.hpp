// KorvelBase: QmObject, the library's one exported C++ class (C++ only; the C headers do not
// include this file).
//
// A small base for reference-counted objects with a class identifier and a 64-bit user value.
// The count moves only through internalAddRef / internalRelease and the class never destroys
// itself: destruction is the derived class's decision.  There is no virtual destructor.
// Copying (construction or assignment) copies the count, the class identifier and the user
// data as they are: a copy starts with its source's count.
//
// Virtual slots, in this order: getReferenceCount, internalRelease, internalAddRef,
// internalGetClsId, internalSetClsId, setUserData, getUserData.
//
// Tracing: when the process-wide trace switch is on (it is off at load and nothing in the
// library turns it on), every count change appends a line to "counter.log" in the current
// folder: "\n => address, outstanding, count \n" on add, "\n <= ... \n" on release.
//
// Threads: count changes are plain, not atomic; share an object between threads only under
// the caller's lock.
#ifndef KORVELBASE_QMOBJECT_HPP
#define KORVELBASE_QMOBJECT_HPP

#include <cstdint>

#include "korvelbase/export.h"

class KB_API QmObject {
public:
    QmObject(const QmObject& other) noexcept;
    QmObject& operator=(const QmObject& other) noexcept;

protected:
    QmObject() noexcept;

    virtual std::uint32_t getReferenceCount() const noexcept;
    // Decrements the count (0 wraps to 4294967295) and returns the new count.
    virtual std::uint32_t internalRelease() noexcept;
    // Increments the count and returns 0 (not the count).
    virtual std::uint32_t internalAddRef() noexcept;
    virtual std::uint32_t internalGetClsId() noexcept;
    // Stores the class identifier; returns 0.
    virtual std::uint32_t internalSetClsId(std::uint32_t clsId) noexcept;
    virtual void setUserData(long long value) noexcept;
    virtual void getUserData(long long& value) const noexcept;

private:
    [[maybe_unused]] std::uint32_t reserved_ = 0;  // read and written by nothing
    std::uint32_t referenceCount_ = 0;
    std::uint32_t clsId_;          // left unset by the default constructor
    long long userData_ = 0;     // signed 64 bits (long long on every target, one mangling)
};

#endif  // KORVELBASE_QMOBJECT_HPP
