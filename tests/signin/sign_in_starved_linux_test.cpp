// A sign-in without descriptors or randomness.

#define OPENSSL_SUPPRESS_DEPRECATED // RAND_set_rand_method is the only way to make RAND_bytes fail

#include <openssl/rand.h>
#include <sys/resource.h>

#include "sign_in_fixture.h"

namespace {

class StarvedSignIn : public SignInTest {
  protected:
    void expectFailure(const char* message) {
        EXPECT_EQ(flow_->state, SignInState::SignedOut);
        EXPECT_EQ(flow_->errorMessage, message);
        EXPECT_TRUE(recordingSystem().openedUrls.empty()) << "the browser must not open without a listener";
        flow_->startSignIn();
        EXPECT_EQ(flow_->state, SignInState::SigningIn) << "the next press starts a new attempt";
        EXPECT_EQ(flow_->errorMessage, "");
    }
};

TEST_F(StarvedSignIn, NoDescriptorForTheListener) {
    flow_->startSignIn(); // the sanitizers open descriptors of their own the first time
    flow_->cancelSignIn();
    recordingSystem().openedUrls.clear();
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
