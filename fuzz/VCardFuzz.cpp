#include "ReadFuzz.h"
#include "addressbook/VCard.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    parcelory::fuzz::read(parcelory::VCard::contacts, data, size);
    return 0;
}
