#pragma once

// All of the library for donors, readers of the card and donor extensions.
#include "quenlet/AccountRecord.h"
#include "quenlet/Card.h"
#include "quenlet/Client.h"
#include "quenlet/Date.h"
#include "quenlet/Donation.h"
#include "quenlet/Error.h"
#include "quenlet/ErrorCodes.h"
#include "quenlet/Extension.h"
#include "quenlet/Result.h"
#include "quenlet/VCards.h"
#include "quenlet/Values.h"
