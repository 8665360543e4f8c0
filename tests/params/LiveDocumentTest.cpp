// The document as this machine gives it, outside any controlled /dev.
#include <gtest/gtest.h>

#include "TestUtil.h"
#include "params/LinuxParametersTableBuilder.h"
#include "util/CharsetConversion.h"

TEST(LiveDocument, ParsesAsXml)
{
    for (const bool russian : {true, false}) {
        LinuxParametersTableBuilder builder(russian);
        builder.BuildProduct(false);
        const std::string document = wstr2str(builder.GetProduct());
        EXPECT_EQ(runWithInput("xmllint --noout - && echo ok", document), "ok\n");
    }
}
