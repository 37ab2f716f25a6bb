#include "core/ByteSearch.h"
#include "support/Test.h"

#include <QRandomGenerator>

namespace parcelory::test {

TEST(ByteSearch, FindsEveryPlaceInBlocksOfAnySize)
{
    QRandomGenerator random(20261121);
    for (int round = 0; round < 3000; ++round) {
        std::string block(random.bounded(300), '\0'), bytes(1 + random.bounded(5), '\0');
        for (std::string *text : {&block, &bytes})
            std::ranges::generate(*text, [&random] { return "ab\xFF"[random.bounded(3)]; });
        ByteSearch search(bytes, block);
        for (std::size_t from = 0; from <= block.size();) {
            const std::size_t expected = block.find(bytes, from);
            const char *place = search.next(block.data() + from);
            ASSERT_EQ(place ? std::size_t(place - block.data()) : block.npos, expected) << bytes << " in " << block;
            if (!place)
                break;
            from = expected + 1 + std::size_t(random.bounded(90)); // sometimes the next place, sometimes far behind it
        }
    }
}

} // namespace parcelory::test
