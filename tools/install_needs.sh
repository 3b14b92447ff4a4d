# Sourced by the set-up scripts: installs the Debian packages whose marker file or command is
# missing. Usage: install_needs "command:cmake" "file:/usr/include/gtest/gtest.h=libgtest-dev" ...
install_needs() {
  local need=() item what pkg
  for item in "$@"; do
    case $item in
      command:*) what=${item#command:}; command -v "$what" >/dev/null || need+=("$what") ;;
      file:*) what=${item#file:}; pkg=${what#*=}; [ -e "${what%%=*}" ] || need+=("$pkg") ;;
    esac
  done
  [ ${#need[@]} -eq 0 ] && return 0
  local sudo=""
  [ "$(id -u)" = 0 ] || sudo=sudo
  $sudo apt-get update -qq && DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${need[@]}"
}
