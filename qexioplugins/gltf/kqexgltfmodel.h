#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFMODEL_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFMODEL_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// \file
/// A glTF file under construction: the JSON objects that the writer uses, as plain structs. Indices are into the vectors of
/// KQexGltfModel, -1 for none; empty vectors and indices of -1 are not written.

namespace qexsdk
{

class KQexNode;

/// Element type of an accessor; the value is its number of components.
enum KQexGltfElement
{
    eGLTF_SCALAR = 1,
    eGLTF_VEC3 = 3,
    eGLTF_VEC4 = 4,
    eGLTF_MAT4 = 16
};

/// glTF's numeric constants.
enum KQexGltfConstant
{
    eGLTF_TRIANGLES = 4,
    eGLTF_UNSIGNED_SHORT = 5123,
    eGLTF_FLOAT = 5126,
    eGLTF_ARRAY_BUFFER = 34962
};

/// The whole file.
struct KQexGltfModel
{
    /// A view of the buffer.
    struct KView
    {
        size_t mOffset = 0; ///< Bytes from the buffer's start.
        size_t mLength = 0; ///< Bytes.
        int    mTarget = 0; ///< eGLTF_ARRAY_BUFFER for vertices, else 0.
    };

    /// An accessor: typed elements in a view.
    struct KAccessor
    {
        int                 mView = -1;                   ///< View that holds the elements.
        int                 mComponentType = eGLTF_FLOAT; ///< eGLTF_FLOAT or eGLTF_UNSIGNED_SHORT.
        KQexGltfElement     mElement = eGLTF_SCALAR;      ///< Type of the elements.
        size_t              mCount = 0;                   ///< Elements.
        std::vector<double> mMin;                         ///< Minimum of each component.
        std::vector<double> mMax;                         ///< Maximum of each component.
    };

    /// A node.
    struct KNode
    {
        std::string         mName;             ///< Not empty; unique among the nodes with mSource.
        std::vector<double> mTranslation;      ///< Three numbers, file units.
        std::vector<double> mRotation;         ///< A quaternion x, y, z, w.
        std::vector<double> mScale;            ///< Three numbers; empty for 1.
        std::vector<int>    mChildren;         ///< Nodes.
        int                 mMesh = -1;        ///< Mesh drawn at the node.
        int                 mSkin = -1;        ///< Skin of that mesh.
        const KQexNode*     mSource = nullptr; ///< Scene node whose properties become its extras; null for none. Not owned.
    };

    /// A skin.
    struct KSkin
    {
        std::string      mName;              ///< Name of its first joint.
        int              mInverseBinds = -1; ///< Accessor.
        int              mSkeleton = -1;     ///< Node.
        std::vector<int> mJoints;            ///< Nodes.
    };

    /// A triangle primitive.
    struct KPrimitive
    {
        std::map<std::string, int> mAttributes;    ///< Accessors by attribute name.
        int                        mMaterial = -1; ///< Material.
    };

    /// A mesh.
    struct KMesh
    {
        std::string             mName;       ///< Name of its node.
        std::vector<KPrimitive> mPrimitives; ///< One for each material; at least one.
    };

    /// A material.
    struct KMaterial
    {
        std::string         mName;            ///< Name of the material.
        std::vector<double> mColor;           ///< Red, green, blue, opacity: 0 to 1, linear.
        double              mMetallic = 0.0;  ///< 0 to 1.
        double              mRoughness = 0.0; ///< 0 to 1.
    };

    /// A channel and its linear sampler: one property of one node.
    struct KChannel
    {
        int         mInput = -1;  ///< Accessor of the times.
        int         mOutput = -1; ///< Accessor of the values.
        int         mNode = -1;   ///< Node that moves.
        std::string mPath;        ///< "translation", "rotation" or "scale".
    };

    /// An animation.
    struct KAnimation
    {
        std::string           mName;     ///< Name of the take.
        std::vector<KChannel> mChannels; ///< Each has its own sampler.
    };

    std::vector<int>        mRootNodes;  ///< Root nodes of the only scene.
    std::vector<KNode>      mNodes;      ///< Nodes, parents before children.
    std::vector<KSkin>      mSkins;      ///< Skins.
    std::vector<KMesh>      mMeshes;     ///< Meshes.
    std::vector<KMaterial>  mMaterials;  ///< Materials.
    std::vector<KAnimation> mAnimations; ///< Animations.
    std::vector<KAccessor>  mAccessors;  ///< Accessors.
    std::vector<KView>      mViews;      ///< Views of the only buffer.
};

} // namespace qexsdk

#endif
