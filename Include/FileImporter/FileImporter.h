// SPDX-License-Identifier: Apache-2.0
// Everything that the library offers.
#pragma once

#include "FileImporter/CFileImporterCocoa.h"
#include "FileImporter/CFileSearchDC.h"
#include "FileImporter/CIMAGETAG.h"
#include "FileImporter/CMEMCARDFILE.h"
#include "FileImporter/DcfNames.h"
#include "FileImporter/ExifFunctions.h"
#include "FileImporter/ExifInformation.h"
#include "FileImporter/FileSearchDC.h"
#include "FileImporter/FileTypeCodes.h"
#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"
#include "FileImporter/Trimming.h"
#include "FileImporter/ZebFileManager.h"
