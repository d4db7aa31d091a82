#pragma once

/// Reaches a private member of a class, for states that no operation leads to: a connector that is
/// missing, a counter before its overflow.
///
/// The argument of an explicit instantiation may name a private member; this is the one way of the
/// language that changes neither the class nor the compiler's view of it.
///
///     PRIVATE_MEMBER(connectorOfWriter, QSharedPointer<Connector> Writer::*, &Writer::m_connector);
///     PRIVATE_MEMBER(counter, int*, &Writer::sm_counter);
///
///     (writer.*connectorOfWriter()).reset();
///     *counter() = 7;
///
/// It stands outside of all namespaces and in one source file.
#define PRIVATE_MEMBER(name, type, member)                                                         \
    struct name##Tag                                                                               \
    {                                                                                              \
        using Type = type;                                                                         \
        friend Type privateMember(name##Tag);                                                      \
    };                                                                                             \
    template struct PrivateMember<name##Tag, member>;                                              \
    static inline name##Tag::Type name()                                                           \
    {                                                                                              \
        return privateMember(name##Tag());                                                         \
    }

/// Defines the function that PRIVATE_MEMBER declares.
template<typename Tag, typename Tag::Type member>
struct PrivateMember
{
    friend typename Tag::Type privateMember(Tag) { return member; }
};
