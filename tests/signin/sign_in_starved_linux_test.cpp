// A sign-in that the system denies what it needs.

#define OPENSSL_SUPPRESS_DEPRECATED // a failing source of randomness can be put in place in the old way only

#include <openssl/rand.h>
#include <sys/resource.h>

#include "sign_in_fixture.h"
#include "signin/loopback_listener.h"

namespace {

class StarvedSignIn : public SignInTest {
  protected:
    void expectFailure(const char* message) {
        EXPECT_EQ(flow_->state, SignInState::SignedOut);
        EXPECT_EQ(flow_->errorMessage, message);
        pollSomeFrames();
        EXPECT_FALSE(std::filesystem::exists(openedFile_)) << "no browser without a listener";
        flow_->startSignIn();
        EXPECT_EQ(flow_->state, SignInState::SigningIn) << "the next press tries anew";
        EXPECT_EQ(flow_->errorMessage, "");
    }
};

TEST_F(StarvedSignIn, NoDescriptorForTheListener) {
    // The sanitizers need descriptors of their own, for types that they have not met before.
    LoopbackListener undisturbed;
    ASSERT_TRUE(undisturbed.start(std::make_shared<SignInMailbox>(), "state"));
    undisturbed.stop();

    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    flow_->startSignIn();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    expectFailure("Could not open the local sign-in listener.");
}

TEST_F(StarvedSignIn, NoRandomness) {
    RAND_METHOD broken = *RAND_OpenSSL();
    broken.bytes = [](unsigned char*, int) { return 0; };
    RAND_set_rand_method(&broken);
    flow_->startSignIn();
    RAND_set_rand_method(nullptr);
    expectFailure("Failed to prepare the sign-in request.");
}

} // namespace
