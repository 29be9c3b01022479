#pragma once

#include <memory>
#include <utility>

namespace qoro
{

/// Guards callbacks that may outlive their object. It is a member of that object. Its pointers become null, and its
/// guarded callbacks do nothing, once the object has been destroyed or end() was called. Any thread may copy and
/// destroy pointers and callbacks; only the object's own thread may use them.
template <typename T>
class Liveness
{
public:
    /// A pointer to the object that becomes null.
    class Pointer
    {
    public:
        /// Null once the object has been destroyed, or end() was called.
        T* get() const
        {
            const std::shared_ptr<T*> held = object_.lock();
            return held ? *held : nullptr;
        }

    private:
        friend Liveness;
        explicit Pointer(const std::shared_ptr<T*>& object) : object_(object) {}

        std::weak_ptr<T*> object_;
    };

    /// @param object whose member this is
    explicit Liveness(T& object) : object_(std::make_shared<T*>(&object)) {}
    Liveness(const Liveness&) = delete;
    Liveness& operator=(const Liveness&) = delete;

    /// A pointer to the object.
    Pointer pointer() const { return Pointer(object_); }
    /// Wraps a callback, which receives the object before its arguments. Its result is discarded.
    template <typename F>
    auto guard(F callback) const
    {
        return [object = pointer(), callback = std::move(callback)](auto&&... arguments) {
            if (T* self = object.get())
                callback(*self, std::forward<decltype(arguments)>(arguments)...);
        };
    }
    /// Disables the pointers and the callbacks before the object is destroyed: for a destructor whose work could call
    /// them.
    void end() { object_.reset(); }

private:
    std::shared_ptr<T*> object_;
};

} // namespace qoro
