// shelf-camera: the camera client for scripts, workshops and many cameras.
#include "cli/commandline.h"

int main(int count, char** arguments) {
    return cli::runCommandLine(count, arguments);
}
