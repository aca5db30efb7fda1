#include <qexioplugins/acclaim/kqexfileacclaimasf.h>

#include <kbaselib/kmath/kdofcodes.h>

namespace qexsdk
{

// An entry's index is its meaning: the reader switches on it, and in smOrder and smDof it is the DOF code that a bone stores.

KToken KQexFileAcclaimAsf::smMain[10] = {{":version", 0}, {":name", 0},     {":units", 0},     {":documentation", 0},
                                         {":root", 0},    {":bonedata", 0}, {":hierarchy", 0}, {":skin", 0},
                                         {":", 0},        {"", 0}};

KToken KQexFileAcclaimAsf::smUnits[4] = {{"mass", 0}, {"length", 0}, {"angle", 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smRoot[5] = {{"axis", 0}, {"order", 0}, {"position", 0}, {"orientation", 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smGroup[3] = {{"begin", 0}, {"end", 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smBoneData[10] = {{"id", 0},  {"name", 0},   {"direction", 0}, {"length", 0},  {"axis", 0},
                                             {"dof", 0}, {"limits", 0}, {"bodymass", 0},  {"cofmass", 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smAngle[3] = {{"deg", 0}, {"rad", 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smAxis[7] = {{"zyx", 0}, {"xzy", 0}, {"yxz", 0}, {"yzx", 0}, {"zxy", 0}, {"xyz", 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smOrder[7] = {
    {kDofWords[0], 0}, {kDofWords[1], 0}, {kDofWords[2], 0}, {kDofWords[3], 0}, {kDofWords[4], 0}, {kDofWords[5], 0}, {"", 0}};

KToken KQexFileAcclaimAsf::smDof[8] = {{kDofWords[0], 0}, {kDofWords[1], 0}, {kDofWords[2], 0}, {kDofWords[3], 0},
                                       {kDofWords[4], 0}, {kDofWords[5], 0}, {"l", 0},          {"", 0}};

const char KQexFileAcclaimAsf::smType[4] = "ASF";
const char KQexFileAcclaimAsf::smDel[9] = " \t, ()\r\n";
const char KQexFileAcclaimAsf::smCom[2] = "#";

KQexFileAcclaimAsf::KQexFileAcclaimAsf(bool pVerb)
    : KQexTextFile(smType, smDel, smCom, true, pVerb), mQexAsfScene(nullptr), mFirstLengthDof(0), mNameIndex(nullptr)
{
}

KQexFileAcclaimAsf::~KQexFileAcclaimAsf()
{
    Close();
}

} // namespace qexsdk
