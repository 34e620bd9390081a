// QmObject: reference counting with an optional trace of every change to "counter.log".
#include "korvelbase/qmobject.hpp"

#include <cstdint>
#include <cstdio>

namespace {

// The process-wide trace state: the switch (off at load; nothing in the library turns it on,
// it is a build-time diagnostic) and the count of references outstanding across all objects.
bool traceReferences = false;
int outstandingReferences = 0;

constexpr const char* kTraceFile = "counter.log";

void traceChange(const char* arrow, const void* object, std::uint32_t count) {
    std::FILE* log = std::fopen(kTraceFile, "at+");
    if (log == nullptr) return;
    std::fprintf(log, "\n %s %d, %d, %d \n", arrow,
                 static_cast<int>(reinterpret_cast<std::uintptr_t>(object)), outstandingReferences,
                 static_cast<int>(count));
    std::fclose(log);
}

}  // namespace

QmObject::QmObject() noexcept : clsId_(0) {}

QmObject::QmObject(const QmObject& other) noexcept
    : referenceCount_(other.referenceCount_), clsId_(other.clsId_), userData_(other.userData_) {}

QmObject& QmObject::operator=(const QmObject& other) noexcept {
    referenceCount_ = other.referenceCount_;
    clsId_ = other.clsId_;
    userData_ = other.userData_;
    return *this;
}

std::uint32_t QmObject::getReferenceCount() const noexcept { return referenceCount_; }

std::uint32_t QmObject::internalRelease() noexcept {
    --referenceCount_;
    if (traceReferences) {
        --outstandingReferences;
        traceChange("<=", this, referenceCount_);
    }
    return referenceCount_;
}

std::uint32_t QmObject::internalAddRef() noexcept {
    ++referenceCount_;
    if (traceReferences) {
        ++outstandingReferences;
        traceChange("=>", this, referenceCount_);
    }
    return 0;
}

std::uint32_t QmObject::internalGetClsId() noexcept { return clsId_; }

std::uint32_t QmObject::internalSetClsId(std::uint32_t clsId) noexcept {
    clsId_ = clsId;
    return 0;
}

void QmObject::setUserData(long long value) noexcept { userData_ = value; }

void QmObject::getUserData(long long& value) const noexcept { value = userData_; }
