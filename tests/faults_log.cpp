#include "faults_operations.h"
const std::vector<Operation> logOperations = {};
