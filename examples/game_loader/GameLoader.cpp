#include "GameLoader.h"

#include <PymWrapper.h>

namespace game {

bool GameLoader::load(const std::function<void()>& work) {
    // The boost ends after timeoutMs_ on its own, should this process never get to release it.
    const int32_t handle = PymEventAcquireWrapper("QUARNE_ACTION_ZEPHON_GAME_LOADING", package_,
                                                  "loading", timeoutMs_);
    struct Release {
        int32_t handle;
        ~Release() {
            if (handle > 0) PymReleaseWapper(handle);
        }
    } release{handle};
    work();
    return handle > 0;
}

}  // namespace game
