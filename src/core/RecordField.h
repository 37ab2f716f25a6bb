#pragma once

namespace parcelory {

/// One row of a record's field table: the field's name in the code and where it is. `R::fields()` returns a tuple of
/// these in the record's order; core/Json.h reads and writes records by it.
template <class R, class M>
struct RecordField {
    const char *name;
    M R::*member;
};

template <class R, class M>
constexpr RecordField<R, M> field(const char *name, M R::*member)
{
    return {name, member};
}

template <class R>
concept Record = requires { R::fields(); };

} // namespace parcelory
