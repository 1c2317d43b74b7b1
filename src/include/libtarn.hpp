#pragma once

// Everything that a host of the library needs.

#include "model/DistinguishedName.hpp"
#include "model/DistinguishedNameValidator.hpp"
#include "model/LibTarnCmData.hpp"
#include "model/LibTarnDocument.hpp"
#include "model/LibTarnExtension.hpp"
#include "model/LibTarnHeader.hpp"
#include "model/LibTarnManagedObject.hpp"
#include "model/List.hpp"
#include "model/Log.hpp"
#include "model/Scalar.hpp"
#include "model/Structure.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/TarnDomElement.hpp"
#include "model/exceptions/ModelException.hpp"
#include "model/indexation/ITarnIndexFactory.hpp"
#include "util/Logger.hpp"
#include "util/TarnFactory.hpp"
#include "util/dumpTarnDocument.hpp"
