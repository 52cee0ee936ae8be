// A library without any of the driver's entry points.
int nothingToSeeHere()
{
    return 0;
}
