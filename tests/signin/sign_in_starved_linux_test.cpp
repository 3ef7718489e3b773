// Tests a sign-in without free descriptors, and one without random bytes.

#define OPENSSL_SUPPRESS_DEPRECATED // RAND_set_rand_method is the only way to make RAND_bytes fail

#include <openssl/rand.h>
#include <sys/resource.h>

#include "sign_in_fixture.h"

TEST_F(SignInTest, WithoutDescriptorsOrRandomnessFailsBeforeTheBrowserOpens) {
    for (int i = 0; i < 2; ++i) { // the sanitizers open descriptors when code runs for the first time
        flow_->startSignIn();
        startNextRun(); // joins the threads of the listener
    }
    const auto expectFailure = [&](const char* message) {
        recordingSystem().openedUrls.clear();
        flow_->startSignIn();
        EXPECT_EQ(flow_->state, SignInState::SignedOut);
        EXPECT_EQ(flow_->errorMessage, message);
        EXPECT_TRUE(recordingSystem().openedUrls.empty());
    };
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    expectFailure("Could not open the local sign-in listener.");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);

    RAND_METHOD broken = *RAND_OpenSSL();
    broken.bytes = [](unsigned char*, int) { return 0; };
    RAND_set_rand_method(&broken);
    expectFailure("Failed to prepare the sign-in request.");
    RAND_set_rand_method(nullptr);

    flow_->startSignIn();
    EXPECT_EQ(flow_->state, SignInState::SigningIn) << "the next press starts a new attempt";
    EXPECT_EQ(flow_->errorMessage, "");
}
