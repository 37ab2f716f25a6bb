#include "ReadFuzz.h"
#include "addressbook/EndiciaList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    parcelory::fuzz::read(parcelory::EndiciaList::contacts, data, size);
    return 0;
}
