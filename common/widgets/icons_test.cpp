#include "common/widgets/icons.h"

#include "common/widgets/testing/widgetapp.h"

#include <gtest/gtest.h>

TEST(ProjectIconsTest, EveryNumberHasItsImageAtBothSizes)
{
    widgetApp();
    const QList<int> numbers = ProjectIcons::numbers();
    ASSERT_TRUE(numbers.contains(229));
    QStringList seen;
    for (const int number : numbers) {
        const QIcon icon = ProjectIcons::icon(number);
        ASSERT_FALSE(icon.isNull()) << number;
        for (const int size : {16, 32}) {
            const QImage image = icon.pixmap(size).toImage();
            EXPECT_EQ(image.size(), QSize(size, size)) << number;
            EXPECT_TRUE(image.hasAlphaChannel()) << number;
        }
        // One image per number, so the icons tell their numbers apart.
        EXPECT_FALSE(seen.contains(ProjectIcons::imageName(number))) << number;
        seen.append(ProjectIcons::imageName(number));
    }
    EXPECT_TRUE(ProjectIcons::icon(9999).isNull());
    EXPECT_TRUE(ProjectIcons::imageName(9999).isEmpty());
}
