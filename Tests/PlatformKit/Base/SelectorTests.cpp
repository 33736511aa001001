// SPDX-License-Identifier: Apache-2.0
// Operations as values.
#include "PlatformKit/Selector.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "PlatformKit/Base/CountedObject.h"
#include "PlatformKit/Number.h"
#include "PlatformKit/String.h"

namespace fi::test {

namespace {

class View final : public CountedObject {
public:
    void ready() { m_calls += "ready "; }
    void take(NSObject* object) { m_calls += object != nullptr ? "object " : "null "; }
    void takeString(const CFString* text) {
        m_calls += text != nullptr ? std::string(text->view()) + " " : "null ";
    }
    id self() { return this; }
    int count() { return 3; }

    [[nodiscard]] const std::string& calls() const { return m_calls; }

private:
    std::string m_calls;
};

TEST(Selector, SameTextAndMethodIsTheSameWord) {
    EXPECT_EQ(selector<&View::ready>("ready"), selector<&View::ready>("ready"));
    EXPECT_NE(selector<&View::ready>("ready"), selector<&View::ready>("ready:"));
    EXPECT_NE(selector<&View::ready>("ready"), selector<&View::self>("ready"));
    EXPECT_STREQ(selector<&View::take>("take:")->name, "take:");
    static_assert(std::is_pointer_v<SEL>);
}

TEST(Selector, NameOutlivesTheTextItWasMadeFrom) {
    SEL made = nullptr;
    {
        std::string text = "aNameThatIsLongerThanAnyInlineBuffer:";
        made = selector<&View::take>(text);
        text.assign(text.size(), 'x');
    }
    EXPECT_STREQ(made->name, "aNameThatIsLongerThanAnyInlineBuffer:");
}

TEST(Selector, PerformsWithAndWithoutArgument) {
    const auto view = make<View>();
    performSelector(view.get(), selector<&View::ready>("ready"), nullptr);
    performSelector(view.get(), selector<&View::take>("take:"), view.get());
    performSelector(view.get(), selector<&View::take>("take:"), nullptr);
    EXPECT_EQ(view->calls(), "ready object null ");
    EXPECT_EQ(view->retainCount(), 1U);
}

TEST(Selector, ArgumentOfAnotherClassArrivesAsNull) {
    const auto view = make<View>();
    performSelector(view.get(), selector<&View::takeString>("takeString:"), view.get());
    const auto text = CFString::create("text");
    performSelector(view.get(), selector<&View::takeString>("takeString:"),
                    const_cast<CFString*>(text.get()));
    EXPECT_EQ(view->calls(), "null text ");
}

TEST(Selector, ReturnsAnObjectOrNull) {
    const auto view = make<View>();
    EXPECT_EQ(performSelector(view.get(), selector<&View::self>("self"), nullptr), view.get());
    EXPECT_EQ(performSelector(view.get(), selector<&View::count>("count"), nullptr), nullptr);
    EXPECT_EQ(performSelector(view.get(), selector<&View::ready>("ready"), nullptr), nullptr);
}

TEST(Selector, NullsAndForeignTargetsDoNothing) {
    const auto stranger = make<CountedObject>();
    EXPECT_EQ(performSelector(nullptr, selector<&View::self>("self"), nullptr), nullptr);
    EXPECT_EQ(performSelector(stranger.get(), selector<&View::self>("self"), nullptr), nullptr);
    EXPECT_EQ(performSelector(stranger.get(), nullptr, nullptr), nullptr);
}

TEST(Selector, ThreadsGetTheSameWord) {
    std::vector<SEL> made(8);
    std::vector<std::thread> threads;
    threads.reserve(made.size());
    for (SEL& one : made)
        threads.emplace_back([&one] { one = selector<&View::take>("fromManyThreads:"); });
    for (auto& thread : threads)
        thread.join();
    for (const SEL one : made)
        EXPECT_EQ(one, made.front());
}

}  // namespace

}  // namespace fi::test
