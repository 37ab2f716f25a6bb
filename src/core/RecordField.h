#pragma once

namespace parcelory {

/// One row of a record's field table: the field's name in the code and its member pointer. `R::fields()` returns a
/// tuple of these rows in the record's order; core/Json.h uses it to read and write records.
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
