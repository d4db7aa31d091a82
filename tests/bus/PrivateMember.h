#pragma once

/// Reaches a private field, for states that no caller can bring about. An explicit instantiation may
/// name what is private; it stores the pointer when the program starts.
/// \code
/// struct Field
/// {
///     static inline QSharedPointer<X> Y::*pointer = nullptr;
/// };
/// template struct PrivateMember<Field, &Y::m_x>;
/// (y.*Field::pointer).reset();
/// \endcode
template<typename Field, auto privatePointer>
struct PrivateMember
{
    static inline const bool isStored = (Field::pointer = privatePointer, true);
};
