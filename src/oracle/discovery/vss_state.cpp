#include "oracle/discovery/vss_state.h"

namespace specific::oracle {

CVssState& CVssState::instance() {
  static CVssState state;
  return state;
}

}  // namespace specific::oracle
